// What JScript does differently: objects are set without Set, null is nothing, collections are enumerated.
var faults = 0;
var checks = 0;

function check(name, holds) {
  ++checks;
  if (!holds) {
    WScript.Echo("fault: " + name);
    ++faults;
  }
}

function fails(name, call) {
  try {
    call();
    check(name + " should fail", false);
  } catch (error) {
    check(name, true);
  }
}

var reader = new ActiveXObject("TeskReader99.clsTeskReader");
var printer = new ActiveXObject("TeskReader99.clsTeskReaderPrinter");
printer.Distance = 77;
reader.Printer = printer;
check("an object is set", reader.Printer.Distance == 77);
reader.Printer = null;
check("null is nothing", reader.Printer == null);
reader.Printer = printer;
check("Booleans are Booleans", reader.CancelScan === true);
check("numbers", reader.LoadDefaults(15) === true && reader.BaudRate === 19200);

for (var row = 1; row <= 3; ++row) {
  var window = new ActiveXObject("TeskReader99.clsTeskReaderWindow");
  window.StartRow = row;
  reader.Windows.Add(window);
}
var rows = "";
for (var all = new Enumerator(reader.Windows); !all.atEnd(); all.moveNext()) rows += all.item().StartRow;
check("enumerated: " + rows, rows == "123");
check("indexed", reader.Windows.Item(2).StartRow == 2);
check("a miss", reader.Windows.Item(9) == null);
fails("a window as imprinter", function () { reader.Printer = reader.Windows.Item(1); });
fails("a text as number", function () { reader.Port = "seven"; });

WScript.Echo(checks + " checks, " + faults + " faults");
if (checks >= 9 && faults == 0) WScript.Echo("PASSED");
WScript.Quit(faults == 0 ? 0 : 1);
