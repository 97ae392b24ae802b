' Creates one class by ProgID, as a host does, and says whether it could:
'   cscript //nologo create_class.vbs zorvat.Generic
' prints "created zorvat.Generic" or "not created zorvat.Generic: Err N: description".
Option Explicit

Dim progId, obj
progId = WScript.Arguments(0)

On Error Resume Next
Set obj = CreateObject(progId)
If Err.Number = 0 Then
  WScript.Echo "created " & progId
Else
  WScript.Echo "not created " & progId & ": Err " & Err.Number & ": " & Err.Description
End If
