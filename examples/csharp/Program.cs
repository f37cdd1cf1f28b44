// Reads sheets with events. Build it for x86 with a COM reference to TeskReader99 (or tlbimp TeskReader99.dll).
using System;
using TeskReader99;

internal static class Program
{
    // The server belongs to a single-threaded apartment with a message loop or, as here, to its calls.
    [STAThread]
    private static int Main()
    {
        var reader = new clsTeskReader();
        reader.LoadDefaults(teskReaderType.teskReaderTypeScantronScanMark5500);
        reader.Port = 3;
        reader.RecognitionMode = teskRecognitionType.teskRecognitionTypePage;
        reader.Duplex = false;
        // Arrays of one's own may begin at 0; element 0 is then ignored.
        reader.Side1Rows = new short[] { 0, 50 };
        reader.Side1Cols = new short[] { 0, 48 };

        reader.PreprocessSheet += OnPreprocessSheet;
        reader.ReadSheet += (ref Array side1, ref Array side2, ref Array barcodes, string image1, string image2,
                             string coordinates1, string coordinates2) =>
        {
            // Two-dimensional, both indices from 1.
            for (int row = 1; row <= side1.GetUpperBound(0); ++row)
            {
                for (int column = 1; column <= side1.GetUpperBound(1); ++column)
                {
                    Console.Write("{0,3}", (short)side1.GetValue(row, column));
                }
                Console.WriteLine();
            }
            reader.EjectPage();
        };

        int sheets = 0;
        bool done = reader.ReadBatch(false, -1, ref sheets);
        Console.WriteLine("{0} sheets", sheets);
        return done ? 0 : 1;
    }

    private static void OnPreprocessSheet(ref Array side1, ref Array side2, ref Array barcodes, ref bool reject)
    {
        // true leaves out ReadSheet; the host then calls RejectPage itself.
        reject = false;
    }
}
