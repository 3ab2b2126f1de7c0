// The console's services, and a memory for what their message boxes showed.
#pragma once

#include <atomic>
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
  AttentiveServices(std::shared_ptr<Services> inner, std::function<void()> before_writing,
                    std::function<bool()> is_cancelled)
      : inner_(std::move(inner)),
        before_writing_(std::move(before_writing)),
        is_cancelled_(std::move(is_cancelled)) {}

  void ForgetBoxes() {
    const std::lock_guard lock(mutex_);
    shown_.clear();
    question_cut_off_ = false;
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

  /// Whether a Ctrl-C ended a question since ForgetBoxes; its answer "No" is nobody's then.
  [[nodiscard]] bool WasQuestionCutOff() const { return question_cut_off_; }

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
    const bool was_cancelled = is_cancelled_();
    const std::int32_t answer = inner_->ShowMessage(text, style, caption);
    if (answer == kAnswerNo && !was_cancelled && is_cancelled_()) question_cut_off_ = true;
    return answer;
  }
  [[nodiscard]] LocaleFacts Locale() const override { return inner_->Locale(); }
  void Assertion(bool condition, std::string_view source, std::string_view module,
                 std::string_view procedure, std::string_view message) override {
    inner_->Assertion(condition, source, module, procedure, message);
  }

 private:
  std::shared_ptr<Services> inner_;
  std::function<void()> before_writing_;
  std::function<bool()> is_cancelled_;
  mutable std::mutex mutex_;
  std::string shown_;
  std::atomic<bool> question_cut_off_ = false;
};

}  // namespace sabrel::cli
