// The console's services, and a memory for what their message boxes showed.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "sabrel/platform/services.h"

namespace sabrel::cli {

/// Passes everything on. `before_writing` runs before anything is written to the terminal.
class AttentiveServices final : public Services {
 public:
  AttentiveServices(std::shared_ptr<Services> inner, std::function<void()> before_writing)
      : inner_(std::move(inner)), before_writing_(std::move(before_writing)) {}

  void ForgetBoxes() {
    const std::lock_guard lock(mutex_);
    shown_.clear();
  }
  [[nodiscard]] bool HasShownAny() const {
    const std::lock_guard lock(mutex_);
    return !shown_.empty();
  }
  /// Whether a message box since ForgetBoxes held `text`.
  [[nodiscard]] bool HasShown(std::string_view text) const {
    const std::lock_guard lock(mutex_);
    return !text.empty() && shown_.find(text) != std::string::npos;
  }

  [[nodiscard]] bool TraceSwitch() const override { return inner_->TraceSwitch(); }
  void WriteTrace(std::string_view text) override {
    before_writing_();
    inner_->WriteTrace(text);
  }
  void WriteLog(std::string_view text) override {
    before_writing_();
    inner_->WriteLog(text);
  }
  std::int32_t ShowMessage(std::string_view text, std::int32_t style,
                           std::string_view caption) override {
    before_writing_();
    {
      const std::lock_guard lock(mutex_);
      shown_.append(text).append("\n");
    }
    return inner_->ShowMessage(text, style, caption);
  }
  [[nodiscard]] LocaleFacts Locale() const override { return inner_->Locale(); }
  void Assertion(bool condition, std::string_view source, std::string_view module,
                 std::string_view procedure, std::string_view message) override {
    inner_->Assertion(condition, source, module, procedure, message);
  }

 private:
  std::shared_ptr<Services> inner_;
  std::function<void()> before_writing_;
  mutable std::mutex mutex_;
  std::string shown_;
};

}  // namespace sabrel::cli
