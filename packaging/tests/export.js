// An export run from a scripting host, as the time-and-attendance host runs one: the
// class created by ProgID, its settings assigned, the check method called, then Execute
// with a collection of time cards. The Save dialog is answered by answer_save.exe.
// The cards are JScript objects, each property a function that returns the value: the
// component reads a property with DISPATCH_PROPERTYGET | DISPATCH_METHOD, as classic
// hosts do, and Wine's JScript answers that on a plain value by trying to call it. (A
// VBScript class instance cannot be a card under Wine either: its GetIDsOfNames returns
// E_NOTIMPL.)
//
//   cscript //nologo export.js ProgID SETUP CARDS
//
// CARDS is a text file of time cards: one "name<TAB>type<TAB>value" line per property
// (type "n" for a number, "s" for a string), and an empty line after each card.
// Prints "exported: <Execute's result>" and "setup: <SetupData after>", or
// "error: <number> <description>".

function property(value) {
  return function() {
    return value;
  };
}

function readCards(path) {
  // Scripting.Dictionary enumerates its keys: the cards are the keys, in order.
  var cards = new ActiveXObject("Scripting.Dictionary");
  var file = new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(path, 1);
  var card = null;
  while (!file.AtEndOfStream) {
    var line = file.ReadLine();
    if (line === "") {
      if (card !== null) cards.Add(card, cards.Count);
      card = null;
      continue;
    }
    if (card === null) card = {Days: new ActiveXObject("Scripting.Dictionary")};
    var parts = line.split("\t");
    card[parts[0]] = property(parts[1] === "n" ? Number(parts[2]) : parts.slice(2).join("\t"));
  }
  if (card !== null) cards.Add(card, cards.Count);
  file.Close();
  return cards;
}

var args = WScript.Arguments;
var progId = args.Item(0), setup = args.Item(1);
try {
  var cards = readCards(args.Item(2));
  var object = new ActiveXObject(progId);
  object.SetupData = setup;
  if (progId === "zorvat.Generic")
    object.Validate("", "");
  else
    object.ValidateSetupData(setup);
  var result = object.Execute(cards);
  WScript.Echo("exported: " + result);
  WScript.Echo("setup: " + object.SetupData);
} catch (error) {
  WScript.Echo("error: " + (error.number & 0xFFFF) + " " + error.description);
  WScript.Quit(1);
}
