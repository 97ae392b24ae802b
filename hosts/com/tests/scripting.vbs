' zorvat from a classic scripting host: every class created by ProgID, its members
' called late-bound, raised errors read from Err as a script sees them.
'
'   cscript //nologo scripting.vbs Generic ADP7 ...
'
' The arguments are the class names: the coclasses of the DLL's type library, which
' zorvat_com_tests --list-classes prints. Prints one "ok - " or "not ok - " line per
' check and "done" at the end.
Option Explicit

Dim index, name, obj, value, created

Sub Check(condition, description)
  If condition Then
    WScript.Echo "ok - " & description
  Else
    WScript.Echo "not ok - " & description
  End If
End Sub

Function ErrorText()
  ErrorText = ""
  If Err.Number <> 0 Then
    ErrorText = " (Err " & Err.Number & " from " & Err.Source & ": " & Err.Description & ")"
  End If
End Function

On Error Resume Next

Check WScript.Arguments.Count > 0, "the class names are given on the command line"

For index = 0 To WScript.Arguments.Count - 1
  name = WScript.Arguments(index)
  Err.Clear
  Set obj = Nothing
  Set obj = CreateObject("zorvat." & name)
  created = (Err.Number = 0)
  Check created, "zorvat." & name & " is created by its ProgID" & ErrorText()
  If created Then
    Check obj.Title = "" And obj.SetupData = "", name & ": a fresh object has empty Title and SetupData"
    obj.Title = "Script title"
    obj.SetupData = "1,2,3"
    Check Err.Number = 0 And obj.Title = "Script title", name & ": Title keeps what is assigned" & ErrorText()
    Check obj.SetupData = "1,2,3", name & ": SetupData keeps what is assigned"
    Err.Clear
    If name = "Generic" Then
      value = 42
      obj.Validate "anything", value
      Check Err.Number = 0 And value = 42, name & ": Validate accepts anything and leaves the value" & ErrorText()
    Else
      obj.ValidateSetupData ""
      If Err.Number = 0 Then
        Check True, name & ": ValidateSetupData called"
      Else
        Check Err.Number > 0 And Err.Number < 65536 And _
              Left(Err.Source, Len("zorvat." & name & ".")) = "zorvat." & name & ".", _
              name & ": ValidateSetupData raises a plain number with the class's source" & ErrorText()
      End If
    End If
    Err.Clear
    If name = "IntuitPAC" Then
      value = obj.IsJr("Intuit PC Access Jr")
      Check Err.Number = 0 And TypeName(value) = "Boolean", name & ": IsJr returns a Boolean" & ErrorText()
    End If
    If name = "QB2000" Then
      value = obj.FormatName("Lee, Ann")
      Check Err.Number = 0 And TypeName(value) = "String", name & ": FormatName returns a String" & ErrorText()
    End If
  End If
Next

' Errors as a script sees them: the plain number, the public member's source and the
' description.
Err.Clear
Set obj = Nothing
Set obj = CreateObject("zorvat.ADP7")
obj.ValidateSetupData "A,B,C"
Check Err.Number = 1002 And Err.Source = "zorvat.ADP7.ValidateSetupData" And _
      Err.Description = "Batch Sequence Number must be between 0 and 99", _
      "ADP7: ValidateSetupData raises errBatchSeqNum 1002" & ErrorText()

Err.Clear
Set obj = CreateObject("zorvat.Generic")
obj.SetupData = "x"
value = obj.Execute(CreateObject("Scripting.Dictionary"))
Check Err.Number = 9 And Err.Source = "zorvat.Generic.Execute" And _
      Err.Description = "Subscript out of range", _
      "Generic: settings without field 1 raise 9 from Execute" & ErrorText()

Err.Clear
obj.SetupData = "0,0,0,0,0,False,True,False,False,False,,0"
value = obj.Execute(CreateObject("Scripting.FileSystemObject"))
Check Err.Number = 438 And Err.Source = "zorvat.Generic.Execute" And _
      Err.Description = "Object doesn't support this property or method", _
      "Generic: an object that is no collection raises 438 from Execute" & ErrorText()

Err.Clear
obj.NoSuchMember
Check Err.Number = 438, "Generic: an unknown member is 438 to the script" & ErrorText()

WScript.Echo "done"
