// Reads sheets with events, for x86:
//
//   tlbimp TeskReader99.dll /sysarray /out:Interop.TeskReader99.dll /namespace:TeskReader99
//   csc /platform:x86 /reference:Interop.TeskReader99.dll Program.cs
//
// A COM reference added in Visual Studio imports the library in the same way. Without /sysarray arrays would be
// taken for one-dimensional ones from 0, which those of the sides are not.
//
// Never compiled or run by us: written after the rules by which tlbimp imports the type library.
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
        // Arrays of one's own may begin at 0; element 0 is then ignored. They are set by reference, which C#
        // knows for methods alone, hence the accessor instead of the property.
        Array rows = new short[] { 0, 50 };
        Array columns = new short[] { 0, 48 };
        reader.set_Side1Rows(ref rows);
        reader.set_Side1Cols(ref columns);

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
