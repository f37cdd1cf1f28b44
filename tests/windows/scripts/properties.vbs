' Sets every writable property of every class to two values and reads each back, late-bound; reads the rest.
Option Explicit
On Error Resume Next

Dim checks, faults
checks = 0
faults = 0

Sub Same(name, found, expected)
  checks = checks + 1
  If Err.Number <> 0 Then
    WScript.Echo name & ": error " & Err.Number & " " & Err.Description
    faults = faults + 1
    Err.Clear
  ElseIf found <> expected Then
    WScript.Echo name & " is " & found & ", not " & expected
    faults = faults + 1
  End If
End Sub

Sub Is_(name, found, expected)
  checks = checks + 1
  If Err.Number <> 0 Then
    WScript.Echo name & ": error " & Err.Number & " " & Err.Description
    faults = faults + 1
    Err.Clear
  ElseIf Not (found Is expected) Then
    WScript.Echo name & " is another object"
    faults = faults + 1
  End If
End Sub

Dim reader
Set reader = CreateObject("TeskReader99.clsTeskReader")
Same "clsTeskReader.CancelScan at first", reader.CancelScan, True
reader.HelpFile = "N" : Same "clsTeskReader.HelpFile", reader.HelpFile, "N"
reader.HelpFile = "two words" : Same "clsTeskReader.HelpFile", reader.HelpFile, "two words"
reader.ImagingEnabled = True : Same "clsTeskReader.ImagingEnabled", reader.ImagingEnabled, True
reader.ImagingEnabled = False : Same "clsTeskReader.ImagingEnabled", reader.ImagingEnabled, False
reader.ReaderGrade = True : Same "clsTeskReader.ReaderGrade", reader.ReaderGrade, True
reader.ReaderGrade = False : Same "clsTeskReader.ReaderGrade", reader.ReaderGrade, False
reader.Duplex = True : Same "clsTeskReader.Duplex", reader.Duplex, True
reader.Duplex = False : Same "clsTeskReader.Duplex", reader.Duplex, False
reader.DuplexForm = True : Same "clsTeskReader.DuplexForm", reader.DuplexForm, True
reader.DuplexForm = False : Same "clsTeskReader.DuplexForm", reader.DuplexForm, False
reader.Barcode = True : Same "clsTeskReader.Barcode", reader.Barcode, True
reader.Barcode = False : Same "clsTeskReader.Barcode", reader.Barcode, False
reader.Image = True : Same "clsTeskReader.Image", reader.Image, True
reader.Image = False : Same "clsTeskReader.Image", reader.Image, False
reader.Feeder = True : Same "clsTeskReader.Feeder", reader.Feeder, True
reader.Feeder = False : Same "clsTeskReader.Feeder", reader.Feeder, False
reader.Rejecter = True : Same "clsTeskReader.Rejecter", reader.Rejecter, True
reader.Rejecter = False : Same "clsTeskReader.Rejecter", reader.Rejecter, False
reader.Windowing = True : Same "clsTeskReader.Windowing", reader.Windowing, True
reader.Windowing = False : Same "clsTeskReader.Windowing", reader.Windowing, False
reader.Continuous = True : Same "clsTeskReader.Continuous", reader.Continuous, True
reader.Continuous = False : Same "clsTeskReader.Continuous", reader.Continuous, False
reader.BaudRate = 1 : Same "clsTeskReader.BaudRate", reader.BaudRate, 1
reader.BaudRate = 2 : Same "clsTeskReader.BaudRate", reader.BaudRate, 2
reader.DataBits = 1 : Same "clsTeskReader.DataBits", reader.DataBits, 1
reader.DataBits = 2 : Same "clsTeskReader.DataBits", reader.DataBits, 2
reader.FlowControl = 1 : Same "clsTeskReader.FlowControl", reader.FlowControl, 1
reader.FlowControl = 2 : Same "clsTeskReader.FlowControl", reader.FlowControl, 2
reader.Parity = "N" : Same "clsTeskReader.Parity", reader.Parity, "N"
reader.Parity = "two words" : Same "clsTeskReader.Parity", reader.Parity, "two words"
reader.StopBits = 1.5 : Same "clsTeskReader.StopBits", reader.StopBits, 1.5
reader.StopBits = 2 : Same "clsTeskReader.StopBits", reader.StopBits, 2
reader.Port = -32768 : Same "clsTeskReader.Port", reader.Port, -32768
reader.Port = 32767 : Same "clsTeskReader.Port", reader.Port, 32767
reader.SleepTime = -2147483647 : Same "clsTeskReader.SleepTime", reader.SleepTime, -2147483647
reader.SleepTime = 2147483646 : Same "clsTeskReader.SleepTime", reader.SleepTime, 2147483646
reader.TimeOut = -2147483647 : Same "clsTeskReader.TimeOut", reader.TimeOut, -2147483647
reader.TimeOut = 2147483646 : Same "clsTeskReader.TimeOut", reader.TimeOut, 2147483646
reader.ColorDepth = 1 : Same "clsTeskReader.ColorDepth", reader.ColorDepth, 1
reader.ColorDepth = 2 : Same "clsTeskReader.ColorDepth", reader.ColorDepth, 2
reader.Resolution = -32768 : Same "clsTeskReader.Resolution", reader.Resolution, -32768
reader.Resolution = 32767 : Same "clsTeskReader.Resolution", reader.Resolution, 32767
reader.MarkCutOff = -32768 : Same "clsTeskReader.MarkCutOff", reader.MarkCutOff, -32768
reader.MarkCutOff = 32767 : Same "clsTeskReader.MarkCutOff", reader.MarkCutOff, 32767
reader.MarkDiscrimination = -32768 : Same "clsTeskReader.MarkDiscrimination", reader.MarkDiscrimination, -32768
reader.MarkDiscrimination = 32767 : Same "clsTeskReader.MarkDiscrimination", reader.MarkDiscrimination, 32767
reader.RecognitionThreshold = -32768 : Same "clsTeskReader.RecognitionThreshold", reader.RecognitionThreshold, -32768
reader.RecognitionThreshold = 32767 : Same "clsTeskReader.RecognitionThreshold", reader.RecognitionThreshold, 32767
reader.ErasureThreshold = -32768 : Same "clsTeskReader.ErasureThreshold", reader.ErasureThreshold, -32768
reader.ErasureThreshold = 32767 : Same "clsTeskReader.ErasureThreshold", reader.ErasureThreshold, 32767
reader.RecognitionThresholdMax = -32768 : Same "clsTeskReader.RecognitionThresholdMax", reader.RecognitionThresholdMax, -32768
reader.RecognitionThresholdMax = 32767 : Same "clsTeskReader.RecognitionThresholdMax", reader.RecognitionThresholdMax, 32767
reader.RecognitionMode = 1 : Same "clsTeskReader.RecognitionMode", reader.RecognitionMode, 1
reader.RecognitionMode = 2 : Same "clsTeskReader.RecognitionMode", reader.RecognitionMode, 2
reader.ReaderType = 1 : Same "clsTeskReader.ReaderType", reader.ReaderType, 1
reader.ReaderType = 2 : Same "clsTeskReader.ReaderType", reader.ReaderType, 2
reader.CancelScan = True : Same "clsTeskReader.CancelScan", reader.CancelScan, True
reader.CancelScan = False : Same "clsTeskReader.CancelScan", reader.CancelScan, False
reader.Side1Image = "N" : Same "clsTeskReader.Side1Image", reader.Side1Image, "N"
reader.Side1Image = "two words" : Same "clsTeskReader.Side1Image", reader.Side1Image, "two words"
reader.Side2Image = "N" : Same "clsTeskReader.Side2Image", reader.Side2Image, "N"
reader.Side2Image = "two words" : Same "clsTeskReader.Side2Image", reader.Side2Image, "two words"
reader.Side1Coordinates = "N" : Same "clsTeskReader.Side1Coordinates", reader.Side1Coordinates, "N"
reader.Side1Coordinates = "two words" : Same "clsTeskReader.Side1Coordinates", reader.Side1Coordinates, "two words"
reader.Side2Coordinates = "N" : Same "clsTeskReader.Side2Coordinates", reader.Side2Coordinates, "N"
reader.Side2Coordinates = "two words" : Same "clsTeskReader.Side2Coordinates", reader.Side2Coordinates, "two words"
reader.Side1Rows = Array(0, 50, 60) : Same "clsTeskReader.Side1Rows", VarType(reader.Side1Rows), 8194
reader.Side1Cols = Array(0, 50, 60) : Same "clsTeskReader.Side1Cols", VarType(reader.Side1Cols), 8194
reader.Side2Rows = Array(0, 50, 60) : Same "clsTeskReader.Side2Rows", VarType(reader.Side2Rows), 8194
reader.Side2Cols = Array(0, 50, 60) : Same "clsTeskReader.Side2Cols", VarType(reader.Side2Cols), 8194
Same "clsTeskReader.Side1Array", VarType(reader.Side1Array), 8194
Same "clsTeskReader.Side2Array", VarType(reader.Side2Array), 8194
reader.HelpID(0) = 4711 : Same "clsTeskReader.HelpID", reader.HelpID(0), 4711
reader.ReaderType = 37 : Same "clsTeskReader.ReaderName", reader.ReaderName, "Chatsworth Data ACP-100"
reader.ColorDepth = 5 : Same "clsTeskReader.ColorDepth of 5", reader.ColorDepth, 0
Same "clsTeskReader.Side1TimingMarks", reader.Side1TimingMarks, -1
Same "clsTeskReader.Side2TimingMarks", reader.Side2TimingMarks, -1

Dim part
Set part = CreateObject("TeskReader99.clsTeskReaderBarcodes") : Set reader.Barcodes = part : Is_ "clsTeskReader.Barcodes", reader.Barcodes, part
Set reader.Barcodes = Nothing : Is_ "clsTeskReader.Barcodes of nothing", reader.Barcodes, Nothing
Set part = CreateObject("TeskReader99.clsTeskReaderWindows") : Set reader.Windows = part : Is_ "clsTeskReader.Windows", reader.Windows, part
Set reader.Windows = Nothing : Is_ "clsTeskReader.Windows of nothing", reader.Windows, Nothing
Set part = CreateObject("TeskReader99.clsTeskReaderProfiles") : Set reader.Profiles = part : Is_ "clsTeskReader.Profiles", reader.Profiles, part
Set reader.Profiles = Nothing : Is_ "clsTeskReader.Profiles of nothing", reader.Profiles, Nothing
Set part = CreateObject("TeskReader99.clsTeskReaderPrinter") : Set reader.Printer = part : Is_ "clsTeskReader.Printer", reader.Printer, part
Set reader.Printer = Nothing : Is_ "clsTeskReader.Printer of nothing", reader.Printer, Nothing
Set part = CreateObject("TeskReader99.clsTeskReader").fComm : Set reader.fComm = part : Is_ "clsTeskReader.fComm", reader.fComm, part
Set reader.fComm = Nothing : Is_ "clsTeskReader.fComm of nothing", reader.fComm, Nothing
Set part = CreateObject("Scripting.Dictionary") : Set reader.AnswerKey = part : Is_ "clsTeskReader.AnswerKey", reader.AnswerKey, part
Set reader.AnswerKey = Nothing : Is_ "clsTeskReader.AnswerKey of nothing", reader.AnswerKey, Nothing

Dim window
Set window = CreateObject("TeskReader99.clsTeskReaderWindow")
window.StartRow = -32768 : Same "clsTeskReaderWindow.StartRow", window.StartRow, -32768
window.StartRow = 32767 : Same "clsTeskReaderWindow.StartRow", window.StartRow, 32767
window.NumRows = -32768 : Same "clsTeskReaderWindow.NumRows", window.NumRows, -32768
window.NumRows = 32767 : Same "clsTeskReaderWindow.NumRows", window.NumRows, 32767
window.RowGap = -32768 : Same "clsTeskReaderWindow.RowGap", window.RowGap, -32768
window.RowGap = 32767 : Same "clsTeskReaderWindow.RowGap", window.RowGap, 32767
window.StartCol = -32768 : Same "clsTeskReaderWindow.StartCol", window.StartCol, -32768
window.StartCol = 32767 : Same "clsTeskReaderWindow.StartCol", window.StartCol, 32767
window.NumCols = -32768 : Same "clsTeskReaderWindow.NumCols", window.NumCols, -32768
window.NumCols = 32767 : Same "clsTeskReaderWindow.NumCols", window.NumCols, 32767
window.ColGap = -32768 : Same "clsTeskReaderWindow.ColGap", window.ColGap, -32768
window.ColGap = 32767 : Same "clsTeskReaderWindow.ColGap", window.ColGap, 32767
window.Page = -32768 : Same "clsTeskReaderWindow.Page", window.Page, -32768
window.Page = 32767 : Same "clsTeskReaderWindow.Page", window.Page, 32767
window.Orientation = -32768 : Same "clsTeskReaderWindow.Orientation", window.Orientation, -32768
window.Orientation = 32767 : Same "clsTeskReaderWindow.Orientation", window.Orientation, 32767
window.NumItems = -32768 : Same "clsTeskReaderWindow.NumItems", window.NumItems, -32768
window.NumItems = 32767 : Same "clsTeskReaderWindow.NumItems", window.NumItems, 32767
window.NumChoices = -32768 : Same "clsTeskReaderWindow.NumChoices", window.NumChoices, -32768
window.NumChoices = 32767 : Same "clsTeskReaderWindow.NumChoices", window.NumChoices, 32767

Dim barcode
Set barcode = CreateObject("TeskReader99.clsTeskReaderBarcode")
barcode.Page = -32768 : Same "clsTeskReaderBarcode.Page", barcode.Page, -32768
barcode.Page = 32767 : Same "clsTeskReaderBarcode.Page", barcode.Page, 32767
barcode.Field = -32768 : Same "clsTeskReaderBarcode.Field", barcode.Field, -32768
barcode.Field = 32767 : Same "clsTeskReaderBarcode.Field", barcode.Field, 32767
barcode.Distance = -32768 : Same "clsTeskReaderBarcode.Distance", barcode.Distance, -32768
barcode.Distance = 32767 : Same "clsTeskReaderBarcode.Distance", barcode.Distance, 32767
barcode.Length = -32768 : Same "clsTeskReaderBarcode.Length", barcode.Length, -32768
barcode.Length = 32767 : Same "clsTeskReaderBarcode.Length", barcode.Length, 32767
barcode.Symbology = 1 : Same "clsTeskReaderBarcode.Symbology", barcode.Symbology, 1
barcode.Symbology = 2 : Same "clsTeskReaderBarcode.Symbology", barcode.Symbology, 2
barcode.Orientation = 1 : Same "clsTeskReaderBarcode.Orientation", barcode.Orientation, 1
barcode.Orientation = 2 : Same "clsTeskReaderBarcode.Orientation", barcode.Orientation, 2

Dim printer
Set printer = CreateObject("TeskReader99.clsTeskReaderPrinter")
printer.SetType 7
printer.Enabled = True : Same "clsTeskReaderPrinter.Enabled", printer.Enabled, True
printer.Enabled = False : Same "clsTeskReaderPrinter.Enabled", printer.Enabled, False
printer.Enabled = True
printer.Active = True : Same "clsTeskReaderPrinter.Active", printer.Active, True
printer.Active = False : Same "clsTeskReaderPrinter.Active", printer.Active, False
printer.Buffer1 = "N" : Same "clsTeskReaderPrinter.Buffer1", printer.Buffer1, "N"
printer.Buffer1 = "two words" : Same "clsTeskReaderPrinter.Buffer1", printer.Buffer1, "two words"
printer.Buffer2 = "N" : Same "clsTeskReaderPrinter.Buffer2", printer.Buffer2, "N"
printer.Buffer2 = "two words" : Same "clsTeskReaderPrinter.Buffer2", printer.Buffer2, "two words"
printer.Buffer3 = "N" : Same "clsTeskReaderPrinter.Buffer3", printer.Buffer3, "N"
printer.Buffer3 = "two words" : Same "clsTeskReaderPrinter.Buffer3", printer.Buffer3, "two words"
printer.Distance = -32768 : Same "clsTeskReaderPrinter.Distance", printer.Distance, -32768
printer.Distance = 32767 : Same "clsTeskReaderPrinter.Distance", printer.Distance, 32767
printer.Enabled = True : printer.Active = True : Same "clsTeskReaderPrinter.Active again", printer.Active, True
Same "clsTeskReaderPrinter.Initialized", printer.Initialized, False
Same "clsTeskReaderPrinter.FilledBufferCount", printer.FilledBufferCount, 3
Same "clsTeskReaderPrinter.BufferCount", printer.BufferCount, 3
Same "clsTeskReaderPrinter.MinPosition", printer.MinPosition, 10
Same "clsTeskReaderPrinter.MaxPosition", printer.MaxPosition, 245
Same "clsTeskReaderPrinter.MaxCharacters", printer.MaxCharacters, 41

Dim profile
Set profile = CreateObject("TeskReader99.clsTeskReaderProfile")
profile.Imaging = True : Same "clsTeskReaderProfile.Imaging", profile.Imaging, True
profile.Imaging = False : Same "clsTeskReaderProfile.Imaging", profile.Imaging, False
profile.ImagingEnabled = True : Same "clsTeskReaderProfile.ImagingEnabled", profile.ImagingEnabled, True
profile.ImagingEnabled = False : Same "clsTeskReaderProfile.ImagingEnabled", profile.ImagingEnabled, False
profile.ImagingVisible = True : Same "clsTeskReaderProfile.ImagingVisible", profile.ImagingVisible, True
profile.ImagingVisible = False : Same "clsTeskReaderProfile.ImagingVisible", profile.ImagingVisible, False
profile.ReaderGrade = True : Same "clsTeskReaderProfile.ReaderGrade", profile.ReaderGrade, True
profile.ReaderGrade = False : Same "clsTeskReaderProfile.ReaderGrade", profile.ReaderGrade, False
profile.ReaderGradeEnabled = True : Same "clsTeskReaderProfile.ReaderGradeEnabled", profile.ReaderGradeEnabled, True
profile.ReaderGradeEnabled = False : Same "clsTeskReaderProfile.ReaderGradeEnabled", profile.ReaderGradeEnabled, False
profile.ReaderGradeVisible = True : Same "clsTeskReaderProfile.ReaderGradeVisible", profile.ReaderGradeVisible, True
profile.ReaderGradeVisible = False : Same "clsTeskReaderProfile.ReaderGradeVisible", profile.ReaderGradeVisible, False
profile.Barcode = True : Same "clsTeskReaderProfile.Barcode", profile.Barcode, True
profile.Barcode = False : Same "clsTeskReaderProfile.Barcode", profile.Barcode, False
profile.BarcodeEnabled = True : Same "clsTeskReaderProfile.BarcodeEnabled", profile.BarcodeEnabled, True
profile.BarcodeEnabled = False : Same "clsTeskReaderProfile.BarcodeEnabled", profile.BarcodeEnabled, False
profile.BarcodeVisible = True : Same "clsTeskReaderProfile.BarcodeVisible", profile.BarcodeVisible, True
profile.BarcodeVisible = False : Same "clsTeskReaderProfile.BarcodeVisible", profile.BarcodeVisible, False
profile.Duplex = True : Same "clsTeskReaderProfile.Duplex", profile.Duplex, True
profile.Duplex = False : Same "clsTeskReaderProfile.Duplex", profile.Duplex, False
profile.DuplexEnabled = True : Same "clsTeskReaderProfile.DuplexEnabled", profile.DuplexEnabled, True
profile.DuplexEnabled = False : Same "clsTeskReaderProfile.DuplexEnabled", profile.DuplexEnabled, False
profile.DuplexVisible = True : Same "clsTeskReaderProfile.DuplexVisible", profile.DuplexVisible, True
profile.DuplexVisible = False : Same "clsTeskReaderProfile.DuplexVisible", profile.DuplexVisible, False
profile.Feeder = True : Same "clsTeskReaderProfile.Feeder", profile.Feeder, True
profile.Feeder = False : Same "clsTeskReaderProfile.Feeder", profile.Feeder, False
profile.FeederEnabled = True : Same "clsTeskReaderProfile.FeederEnabled", profile.FeederEnabled, True
profile.FeederEnabled = False : Same "clsTeskReaderProfile.FeederEnabled", profile.FeederEnabled, False
profile.FeederVisible = True : Same "clsTeskReaderProfile.FeederVisible", profile.FeederVisible, True
profile.FeederVisible = False : Same "clsTeskReaderProfile.FeederVisible", profile.FeederVisible, False
profile.Rejecter = True : Same "clsTeskReaderProfile.Rejecter", profile.Rejecter, True
profile.Rejecter = False : Same "clsTeskReaderProfile.Rejecter", profile.Rejecter, False
profile.RejecterEnabled = True : Same "clsTeskReaderProfile.RejecterEnabled", profile.RejecterEnabled, True
profile.RejecterEnabled = False : Same "clsTeskReaderProfile.RejecterEnabled", profile.RejecterEnabled, False
profile.RejecterVisible = True : Same "clsTeskReaderProfile.RejecterVisible", profile.RejecterVisible, True
profile.RejecterVisible = False : Same "clsTeskReaderProfile.RejecterVisible", profile.RejecterVisible, False
profile.Printer = True : Same "clsTeskReaderProfile.Printer", profile.Printer, True
profile.Printer = False : Same "clsTeskReaderProfile.Printer", profile.Printer, False
profile.PrinterEnabled = True : Same "clsTeskReaderProfile.PrinterEnabled", profile.PrinterEnabled, True
profile.PrinterEnabled = False : Same "clsTeskReaderProfile.PrinterEnabled", profile.PrinterEnabled, False
profile.PrinterVisible = True : Same "clsTeskReaderProfile.PrinterVisible", profile.PrinterVisible, True
profile.PrinterVisible = False : Same "clsTeskReaderProfile.PrinterVisible", profile.PrinterVisible, False
profile.PrinterPositionEnabled = True : Same "clsTeskReaderProfile.PrinterPositionEnabled", profile.PrinterPositionEnabled, True
profile.PrinterPositionEnabled = False : Same "clsTeskReaderProfile.PrinterPositionEnabled", profile.PrinterPositionEnabled, False
profile.InterfaceType = 1 : Same "clsTeskReaderProfile.InterfaceType", profile.InterfaceType, 1
profile.InterfaceType = 2 : Same "clsTeskReaderProfile.InterfaceType", profile.InterfaceType, 2
profile.BaudRate = 1 : Same "clsTeskReaderProfile.BaudRate", profile.BaudRate, 1
profile.BaudRate = 2 : Same "clsTeskReaderProfile.BaudRate", profile.BaudRate, 2
profile.BaudRateEnabled = True : Same "clsTeskReaderProfile.BaudRateEnabled", profile.BaudRateEnabled, True
profile.BaudRateEnabled = False : Same "clsTeskReaderProfile.BaudRateEnabled", profile.BaudRateEnabled, False
profile.BaudRateVisible = True : Same "clsTeskReaderProfile.BaudRateVisible", profile.BaudRateVisible, True
profile.BaudRateVisible = False : Same "clsTeskReaderProfile.BaudRateVisible", profile.BaudRateVisible, False
profile.DataBits = 1 : Same "clsTeskReaderProfile.DataBits", profile.DataBits, 1
profile.DataBits = 2 : Same "clsTeskReaderProfile.DataBits", profile.DataBits, 2
profile.DataBitsEnabled = True : Same "clsTeskReaderProfile.DataBitsEnabled", profile.DataBitsEnabled, True
profile.DataBitsEnabled = False : Same "clsTeskReaderProfile.DataBitsEnabled", profile.DataBitsEnabled, False
profile.DataBitsVisible = True : Same "clsTeskReaderProfile.DataBitsVisible", profile.DataBitsVisible, True
profile.DataBitsVisible = False : Same "clsTeskReaderProfile.DataBitsVisible", profile.DataBitsVisible, False
profile.FlowControl = 1 : Same "clsTeskReaderProfile.FlowControl", profile.FlowControl, 1
profile.FlowControl = 2 : Same "clsTeskReaderProfile.FlowControl", profile.FlowControl, 2
profile.FlowControlEnabled = True : Same "clsTeskReaderProfile.FlowControlEnabled", profile.FlowControlEnabled, True
profile.FlowControlEnabled = False : Same "clsTeskReaderProfile.FlowControlEnabled", profile.FlowControlEnabled, False
profile.FlowControlVisible = True : Same "clsTeskReaderProfile.FlowControlVisible", profile.FlowControlVisible, True
profile.FlowControlVisible = False : Same "clsTeskReaderProfile.FlowControlVisible", profile.FlowControlVisible, False
profile.ColorDepth = 1 : Same "clsTeskReaderProfile.ColorDepth", profile.ColorDepth, 1
profile.ColorDepth = 2 : Same "clsTeskReaderProfile.ColorDepth", profile.ColorDepth, 2
profile.ColorDepthEnabled = True : Same "clsTeskReaderProfile.ColorDepthEnabled", profile.ColorDepthEnabled, True
profile.ColorDepthEnabled = False : Same "clsTeskReaderProfile.ColorDepthEnabled", profile.ColorDepthEnabled, False
profile.ColorDepthVisible = True : Same "clsTeskReaderProfile.ColorDepthVisible", profile.ColorDepthVisible, True
profile.ColorDepthVisible = False : Same "clsTeskReaderProfile.ColorDepthVisible", profile.ColorDepthVisible, False
profile.Resolution = -32768 : Same "clsTeskReaderProfile.Resolution", profile.Resolution, -32768
profile.Resolution = 32767 : Same "clsTeskReaderProfile.Resolution", profile.Resolution, 32767
profile.ResolutionEnabled = True : Same "clsTeskReaderProfile.ResolutionEnabled", profile.ResolutionEnabled, True
profile.ResolutionEnabled = False : Same "clsTeskReaderProfile.ResolutionEnabled", profile.ResolutionEnabled, False
profile.ResolutionVisible = True : Same "clsTeskReaderProfile.ResolutionVisible", profile.ResolutionVisible, True
profile.ResolutionVisible = False : Same "clsTeskReaderProfile.ResolutionVisible", profile.ResolutionVisible, False
profile.StopBits = 1.5 : Same "clsTeskReaderProfile.StopBits", profile.StopBits, 1.5
profile.StopBits = 2 : Same "clsTeskReaderProfile.StopBits", profile.StopBits, 2
profile.StopBitsEnabled = True : Same "clsTeskReaderProfile.StopBitsEnabled", profile.StopBitsEnabled, True
profile.StopBitsEnabled = False : Same "clsTeskReaderProfile.StopBitsEnabled", profile.StopBitsEnabled, False
profile.StopBitsVisible = True : Same "clsTeskReaderProfile.StopBitsVisible", profile.StopBitsVisible, True
profile.StopBitsVisible = False : Same "clsTeskReaderProfile.StopBitsVisible", profile.StopBitsVisible, False
profile.ReaderType = 1 : Same "clsTeskReaderProfile.ReaderType", profile.ReaderType, 1
profile.ReaderType = 2 : Same "clsTeskReaderProfile.ReaderType", profile.ReaderType, 2
profile.MarkCutOff = -32768 : Same "clsTeskReaderProfile.MarkCutOff", profile.MarkCutOff, -32768
profile.MarkCutOff = 32767 : Same "clsTeskReaderProfile.MarkCutOff", profile.MarkCutOff, 32767
profile.MarkDiscrimination = -32768 : Same "clsTeskReaderProfile.MarkDiscrimination", profile.MarkDiscrimination, -32768
profile.MarkDiscrimination = 32767 : Same "clsTeskReaderProfile.MarkDiscrimination", profile.MarkDiscrimination, 32767
profile.MarkDiscriminationEnabled = True : Same "clsTeskReaderProfile.MarkDiscriminationEnabled", profile.MarkDiscriminationEnabled, True
profile.MarkDiscriminationEnabled = False : Same "clsTeskReaderProfile.MarkDiscriminationEnabled", profile.MarkDiscriminationEnabled, False
profile.MarkDiscriminationVisible = True : Same "clsTeskReaderProfile.MarkDiscriminationVisible", profile.MarkDiscriminationVisible, True
profile.MarkDiscriminationVisible = False : Same "clsTeskReaderProfile.MarkDiscriminationVisible", profile.MarkDiscriminationVisible, False
profile.RecognitionThreshold = -32768 : Same "clsTeskReaderProfile.RecognitionThreshold", profile.RecognitionThreshold, -32768
profile.RecognitionThreshold = 32767 : Same "clsTeskReaderProfile.RecognitionThreshold", profile.RecognitionThreshold, 32767
profile.ErasureThreshold = -32768 : Same "clsTeskReaderProfile.ErasureThreshold", profile.ErasureThreshold, -32768
profile.ErasureThreshold = 32767 : Same "clsTeskReaderProfile.ErasureThreshold", profile.ErasureThreshold, 32767
profile.RecognitionThresholdEnabled = True : Same "clsTeskReaderProfile.RecognitionThresholdEnabled", profile.RecognitionThresholdEnabled, True
profile.RecognitionThresholdEnabled = False : Same "clsTeskReaderProfile.RecognitionThresholdEnabled", profile.RecognitionThresholdEnabled, False
profile.RecognitionThresholdVisible = True : Same "clsTeskReaderProfile.RecognitionThresholdVisible", profile.RecognitionThresholdVisible, True
profile.RecognitionThresholdVisible = False : Same "clsTeskReaderProfile.RecognitionThresholdVisible", profile.RecognitionThresholdVisible, False
profile.RecognitionThresholdMinimum = -32768 : Same "clsTeskReaderProfile.RecognitionThresholdMinimum", profile.RecognitionThresholdMinimum, -32768
profile.RecognitionThresholdMinimum = 32767 : Same "clsTeskReaderProfile.RecognitionThresholdMinimum", profile.RecognitionThresholdMinimum, 32767
profile.RecognitionThresholdMaximum = -32768 : Same "clsTeskReaderProfile.RecognitionThresholdMaximum", profile.RecognitionThresholdMaximum, -32768
profile.RecognitionThresholdMaximum = 32767 : Same "clsTeskReaderProfile.RecognitionThresholdMaximum", profile.RecognitionThresholdMaximum, 32767
profile.SleepTime = -2147483647 : Same "clsTeskReaderProfile.SleepTime", profile.SleepTime, -2147483647
profile.SleepTime = 2147483646 : Same "clsTeskReaderProfile.SleepTime", profile.SleepTime, 2147483646
profile.SleepTimeEnabled = True : Same "clsTeskReaderProfile.SleepTimeEnabled", profile.SleepTimeEnabled, True
profile.SleepTimeEnabled = False : Same "clsTeskReaderProfile.SleepTimeEnabled", profile.SleepTimeEnabled, False
profile.SleepTimeVisible = True : Same "clsTeskReaderProfile.SleepTimeVisible", profile.SleepTimeVisible, True
profile.SleepTimeVisible = False : Same "clsTeskReaderProfile.SleepTimeVisible", profile.SleepTimeVisible, False
profile.TimeOut = -2147483647 : Same "clsTeskReaderProfile.TimeOut", profile.TimeOut, -2147483647
profile.TimeOut = 2147483646 : Same "clsTeskReaderProfile.TimeOut", profile.TimeOut, 2147483646
profile.TimeOutEnabled = True : Same "clsTeskReaderProfile.TimeOutEnabled", profile.TimeOutEnabled, True
profile.TimeOutEnabled = False : Same "clsTeskReaderProfile.TimeOutEnabled", profile.TimeOutEnabled, False
profile.TimeOutVisible = True : Same "clsTeskReaderProfile.TimeOutVisible", profile.TimeOutVisible, True
profile.TimeOutVisible = False : Same "clsTeskReaderProfile.TimeOutVisible", profile.TimeOutVisible, False
profile.Parity = "N" : Same "clsTeskReaderProfile.Parity", profile.Parity, "N"
profile.Parity = "two words" : Same "clsTeskReaderProfile.Parity", profile.Parity, "two words"
profile.ParityEnabled = True : Same "clsTeskReaderProfile.ParityEnabled", profile.ParityEnabled, True
profile.ParityEnabled = False : Same "clsTeskReaderProfile.ParityEnabled", profile.ParityEnabled, False
profile.ParityVisible = True : Same "clsTeskReaderProfile.ParityVisible", profile.ParityVisible, True
profile.ParityVisible = False : Same "clsTeskReaderProfile.ParityVisible", profile.ParityVisible, False
profile.PortEnabled = True : Same "clsTeskReaderProfile.PortEnabled", profile.PortEnabled, True
profile.PortEnabled = False : Same "clsTeskReaderProfile.PortEnabled", profile.PortEnabled, False
profile.PortVisible = True : Same "clsTeskReaderProfile.PortVisible", profile.PortVisible, True
profile.PortVisible = False : Same "clsTeskReaderProfile.PortVisible", profile.PortVisible, False
profile.Windowing = True : Same "clsTeskReaderProfile.Windowing", profile.Windowing, True
profile.Windowing = False : Same "clsTeskReaderProfile.Windowing", profile.Windowing, False
profile.WindowingEnabled = True : Same "clsTeskReaderProfile.WindowingEnabled", profile.WindowingEnabled, True
profile.WindowingEnabled = False : Same "clsTeskReaderProfile.WindowingEnabled", profile.WindowingEnabled, False
profile.WindowingVisible = True : Same "clsTeskReaderProfile.WindowingVisible", profile.WindowingVisible, True
profile.WindowingVisible = False : Same "clsTeskReaderProfile.WindowingVisible", profile.WindowingVisible, False
profile.Continuous = True : Same "clsTeskReaderProfile.Continuous", profile.Continuous, True
profile.Continuous = False : Same "clsTeskReaderProfile.Continuous", profile.Continuous, False
profile.ContinuousEnabled = True : Same "clsTeskReaderProfile.ContinuousEnabled", profile.ContinuousEnabled, True
profile.ContinuousEnabled = False : Same "clsTeskReaderProfile.ContinuousEnabled", profile.ContinuousEnabled, False
profile.ContinuousVisible = True : Same "clsTeskReaderProfile.ContinuousVisible", profile.ContinuousVisible, True
profile.ContinuousVisible = False : Same "clsTeskReaderProfile.ContinuousVisible", profile.ContinuousVisible, False
profile.LocateEnabled = True : Same "clsTeskReaderProfile.LocateEnabled", profile.LocateEnabled, True
profile.LocateEnabled = False : Same "clsTeskReaderProfile.LocateEnabled", profile.LocateEnabled, False
profile.FirmwareEnabled = True : Same "clsTeskReaderProfile.FirmwareEnabled", profile.FirmwareEnabled, True
profile.FirmwareEnabled = False : Same "clsTeskReaderProfile.FirmwareEnabled", profile.FirmwareEnabled, False
profile.MaxCols = -32768 : Same "clsTeskReaderProfile.MaxCols", profile.MaxCols, -32768
profile.MaxCols = 32767 : Same "clsTeskReaderProfile.MaxCols", profile.MaxCols, 32767
profile.Class_Initialize
Same "clsTeskReaderProfile.ReaderName", profile.ReaderName, "None"
Same "clsTeskReaderProfile.BaudRate of a fresh one", profile.BaudRate, 9600

Dim profiles
Set profiles = CreateObject("TeskReader99.clsTeskReaderProfiles")
Same "clsTeskReaderProfiles.Count", profiles.Count, 46
profiles.ProfileType = 8 : Same "clsTeskReaderProfiles.ProfileType", profiles.ProfileType, 8
Same "clsTeskReaderProfiles.Count of 8", profiles.Count, 7

Dim serial
Set serial = CreateObject("TeskReader99.clsTeskReader").fComm.mscComm
serial.CommPort = 3 : Same "mscComm.CommPort", serial.CommPort, 3
serial.CommPort = 16 : Same "mscComm.CommPort", serial.CommPort, 16
serial.Settings = "9600,N,8,1" : Same "mscComm.Settings", serial.Settings, "9600,N,8,1"
serial.Settings = "1200,E,7,2" : Same "mscComm.Settings", serial.Settings, "1200,E,7,2"
serial.Handshaking = 3 : Same "mscComm.Handshaking", serial.Handshaking, 3
serial.Handshaking = 0 : Same "mscComm.Handshaking", serial.Handshaking, 0
serial.InputLen = 12 : Same "mscComm.InputLen", serial.InputLen, 12
serial.InputLen = 0 : Same "mscComm.InputLen", serial.InputLen, 0
Same "mscComm.PortOpen", serial.PortOpen, False

Dim timer_
Set timer_ = CreateObject("TeskReader99.clsTeskReader").fComm.tmrScan
timer_.Interval = 60000 : Same "tmrScan.Interval", timer_.Interval, 60000
timer_.Interval = 600000 : Same "tmrScan.Interval", timer_.Interval, 600000
timer_.Enabled = True : Same "tmrScan.Enabled", timer_.Enabled, True
timer_.Enabled = False : Same "tmrScan.Enabled", timer_.Enabled, False

WScript.Echo checks & " checks, " & faults & " faults"
If checks >= 290 And faults = 0 Then
  WScript.Echo "PASSED"
  WScript.Quit 0
End If
WScript.Quit 1
