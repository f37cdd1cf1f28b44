"""Reads sheets with events. Needs 32-bit Python and pywin32.

Never run by us under Windows; the same late-bound calls are made by the tests from VBScript and C++.
"""
import pythoncom
import win32com.client

SCANMARK_5500 = 15
WHOLE_PAGE = 1


class SheetEvents:
    """Handlers are named after the events; what they return goes into the arguments by reference, in order."""

    sheets = 0

    def OnReadSheet(self, side1, side2, barcodes, image1, image2, coordinates1, coordinates2):
        SheetEvents.sheets += 1
        # Rows of columns; Python counts both from 0.
        marked = sum(1 for row in side1 for value in row if value > 0)
        print(f"sheet {SheetEvents.sheets}: {len(side1)} rows, {marked} positions with a mark")
        self.EjectPage()


def main():
    pythoncom.CoInitialize()
    reader = win32com.client.DispatchWithEvents("TeskReader99.clsTeskReader", SheetEvents)
    reader.LoadDefaults(SCANMARK_5500)
    reader.Port = 3
    reader.RecognitionMode = WHOLE_PAGE
    reader.Duplex = False
    reader.Side1Rows = [0, 50]  # element 0 is ignored
    reader.Side1Cols = [0, 48]
    # What goes out by reference comes back behind the result.
    done, tried = reader.ReadBatch(False, -1, 0)
    print(f"{SheetEvents.sheets} sheets, {tried} tried")
    return 0 if done else 1


if __name__ == "__main__":
    raise SystemExit(main())
