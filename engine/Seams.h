// What the engine needs from above, as small interfaces that are handed to it at construction, and the
// events that it raises. The engine knows no driver, no store and no dialog.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/SideArray.h"
#include "base/enumerations.h"
#include "engine/Sheet.h"

namespace tesk {

class Clock;
class clsTeskReader;
class frmComm;
class HostLoop;
class OmrLibrary;
class OmrLibraryLoader;

// An object of the host's that the engine only keeps: the answer key, the data of TranslateData, the window
// that owns a dialog.
class HostObject {
 public:
  virtual ~HostObject() = default;
  // The system's handle of a window that can own a dialog; 0 where the object is none.
  virtual std::intptr_t WindowHandle() const { return 0; }
};

// The events in slot order. Arguments by reference may be changed; arrays are the sheet's own, so what a
// host changes in PreprocessSheet is what ReadSheet hands out, whatever other sheets it read meanwhile.
class ReaderEvents {
 public:
  virtual ~ReaderEvents() = default;
  virtual void BeforeSheet(bool& /*bInitializePrinter*/) {}
  virtual void PreprocessSheet(SideArray& /*iSide1Array*/, SideArray& /*iSide2Array*/,
                               BarcodeArray& /*sBarcodeArray*/, bool& /*bReject*/) {}
  virtual void ReadSheet(SideArray& /*iSide1Array*/, SideArray& /*iSide2Array*/,
                         BarcodeArray& /*sBarcodeArray*/, const std::string& /*sSide1FileName*/,
                         const std::string& /*sSide2FileName*/, const std::string& /*sSide1ItemCoordinates*/,
                         const std::string& /*sSide2ItemCoordinates*/) {}
  virtual void AfterSheet(bool& /*bCancelScan*/) {}
  virtual void BeforePrint(bool& /*bCancel*/) {}
  virtual void AfterPrint() {}
  virtual void TranslateData(std::shared_ptr<HostObject>& /*oData*/, SideArray& /*iSide1Array*/,
                             SideArray& /*iSide2Array*/, BarcodeArray& /*sBarcodeArray*/,
                             bool& /*bNeedsMoreData*/) {}
  virtual void GetQuestionsOnPage(std::int16_t& /*iPage*/, std::int16_t& /*iNumberQuestions*/) {}
};

// The count of a batch's sheets, where its host keeps it. The batch reads it whenever it needs it and adds 1
// per sheet, so that what the host writes meanwhile counts. What either throws ends the batch.
class SheetCounter {
 public:
  virtual ~SheetCounter() = default;
  virtual std::int32_t Count() = 0;
  virtual void SetCount(std::int32_t count) = 0;
};

// The dispatch: routes an operation to the driver of the engine's reader type.
class ReaderDispatch {
 public:
  virtual ~ReaderDispatch() = default;
  virtual bool ReaderInit(clsTeskReader& reader) = 0;
  virtual bool ReaderClose(clsTeskReader& reader) = 0;
  // Stores the sheet in the engine when there is one.
  virtual bool ReaderRead(clsTeskReader& reader) = 0;
  // skip: printing is to be left out for this sheet. disposed: a driver whose print sends the sheet on sets
  // it.
  virtual bool ReaderPrint(clsTeskReader& reader, bool skip, bool& disposed) = 0;
  virtual void ReaderReject(clsTeskReader& reader) = 0;
  // disposed: replaced by the families whose eject may fail.
  virtual void ReaderEject(clsTeskReader& reader, bool& disposed) = 0;
};

// The port search and the identification request of the readers that can be located.
class PortSearch {
 public:
  virtual ~PortSearch() = default;
  virtual bool Locate(clsTeskReader& reader, std::int16_t startPort) = 0;
  virtual bool Firmware(clsTeskReader& reader, std::string& firmware) = 0;
};

// The modal setup dialog. True when the user confirmed it.
class SetupDialog {
 public:
  virtual ~SetupDialog() = default;
  virtual bool Show(clsTeskReader& reader, std::int32_t helpTopic,
                    const std::shared_ptr<HostObject>& parent) = 0;
};

// One stored setting.
struct StoredValue {
  std::string name;
  std::string text;
  bool operator==(const StoredValue&) const = default;
};

// The store of settings: text values by name under a root and a hierarchical key ("School\Lab").
class SettingsStore {
 public:
  virtual ~SettingsStore() = default;
  // Creates the key where it is missing, and stores all values in one go. True when they were stored; a fault
  // that a person can mend is thrown as a run-time error that says how.
  virtual bool SaveValues(teskReaderRegistryKey root, const std::string& key,
                          const std::vector<StoredValue>& values) = 0;
  bool SaveValue(teskReaderRegistryKey root, const std::string& key, const std::string& name,
                 const std::string& text) {
    return SaveValues(root, key, {{name, text}});
  }
  // The stored text up to its first zero character; nothing where the key or the value is missing, is longer
  // than 1024 bytes, or is of a type that holds no text.
  virtual std::optional<std::string> LoadValue(teskReaderRegistryKey root, const std::string& key,
                                               const std::string& name) = 0;
  // Forgets the values of these names and, where nothing else is in it, the key; false where it had none.
  virtual bool DeleteValues(teskReaderRegistryKey root, const std::string& key,
                            const std::vector<std::string>& names) = 0;
};

// Everything an engine is given. comm, loop, clock and dispatch are never empty; where another is, the operations
// that need it report that this system does not offer them.
struct EngineSeams {
  std::shared_ptr<frmComm> comm = nullptr;
  std::shared_ptr<HostLoop> loop = nullptr;
  std::shared_ptr<const Clock> clock = nullptr;
  std::shared_ptr<ReaderDispatch> dispatch = nullptr;
  std::shared_ptr<PortSearch> portSearch = nullptr;
  std::shared_ptr<SetupDialog> setupDialog = nullptr;
  std::shared_ptr<SettingsStore> settings = nullptr;
  std::shared_ptr<OmrLibraryLoader> omrLoader = nullptr;
};

}  // namespace tesk
