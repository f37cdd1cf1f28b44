{ Reads sheets, late-bound. For events import the type library (Component > Import Component) and use the
  generated TclsTeskReader with its OnReadSheet.

  Never compiled or run by us; the same late-bound calls are made by the tests from VBScript and C++. }
program ReadSheets;

{$APPTYPE CONSOLE}

uses
  ActiveX, ComObj, SysUtils, Variants;

const
  teskReaderTypeScantronScanMark5500 = 15;
  teskRecognitionTypePage = 1;

var
  Reader, Sizes, Marks: OleVariant;
  Sheet, Row, Column, Marked: Integer;

begin
  CoInitialize(nil);
  try
    Reader := CreateOleObject('TeskReader99.clsTeskReader');
    Reader.LoadDefaults(teskReaderTypeScantronScanMark5500);
    Reader.Port := 3;
    Reader.RecognitionMode := teskRecognitionTypePage;
    Reader.Duplex := False;
    Sizes := VarArrayCreate([1, 1], varSmallint);
    Sizes[1] := 50;
    Reader.Side1Rows := Sizes;
    Sizes[1] := 48;
    Reader.Side1Cols := Sizes;

    if not Reader.StartReader then
      Halt(1);
    Sheet := 0;
    while Reader.ReadPage do
    begin
      Inc(Sheet);
      Marks := Reader.Side1Array;
      Marked := 0;
      for Row := 1 to VarArrayHighBound(Marks, 1) do
        for Column := 1 to VarArrayHighBound(Marks, 2) do
          if Marks[Row, Column] > 0 then
            Inc(Marked);
      Writeln(Format('sheet %d: %d positions with a mark', [Sheet, Marked]));
      Reader.EjectPage;
    end;
    Reader.EndReader;
  finally
    Marks := Unassigned;
    Reader := Unassigned;
    CoUninitialize;
  end;
end.
