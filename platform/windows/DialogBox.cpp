// The message box on the screen.
#include "platform/windows/DialogBox.h"

#include "base/conversions.h"
#include "platform/windows/Text.h"
#include "platform/windows/WindowsApi.h"

namespace tesk::platform {
namespace {

class DialogBox : public MessageBox {
 public:
  void Show(const std::string& title, const std::string& text) override {
    ::MessageBoxW(nullptr, Utf8ToWide(Replace(text, "|", "\n")).c_str(), Utf8ToWide(title).c_str(),
                  MB_OK | MB_ICONEXCLAMATION | MB_TASKMODAL | MB_SETFOREGROUND);
  }
};

}  // namespace

std::shared_ptr<MessageBox> CreateDialogBox() { return std::make_shared<DialogBox>(); }

}  // namespace tesk::platform
