#include "win32/Win32Automation.h"

#include "win32/Components.h"
#include "win32/DispatchObject.h"
#include "win32/Win32Text.h"

namespace trelv::win32 {
namespace {

using machine::AutomationAnswer;

/// Word's number for "go to a bookmark".
constexpr long kBookmark = -1;

class Win32WordProcessor : public machine::WordProcessor {
 public:
  AutomationAnswer start() { return DispatchObject::start(L"Word.Application", application_); }

  AutomationAnswer openDocument(const std::string& path) override {
    return callOf(L"Documents", L"Open", {wide(path)});
  }
  AutomationAnswer makeVisible() override { return application_.put(L"Visible", true); }
  AutomationAnswer activate() override { return application_.call(L"Activate"); }
  AutomationAnswer goToBookmark(const std::string& name) override {
    return callOf(L"Selection", L"GoTo", {kBookmark, LeftOut{}, LeftOut{}, wide(name)});
  }
  AutomationAnswer quit() override { return application_.call(L"Quit"); }

 private:
  /// Calls a method of an object that the application has.
  AutomationAnswer callOf(const wchar_t* part, const wchar_t* method,
                          const std::vector<DispatchArgument>& arguments) const {
    DispatchObject object;
    const AutomationAnswer found = application_.get(part, object);
    return found.code != 0 ? found : object.call(method, arguments);
  }

  // The library must outlive the object.
  Components components_;
  DispatchObject application_;
};

}  // namespace

AutomationAnswer Win32Automation::startWord(std::unique_ptr<machine::WordProcessor>& word) {
  auto started = std::make_unique<Win32WordProcessor>();
  AutomationAnswer answer = started->start();
  if (answer.code == 0) {
    word = std::move(started);
  }
  return answer;
}

}  // namespace trelv::win32
