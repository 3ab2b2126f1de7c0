// A platform that answers what a test tells it to, fails where a test tells it to, and writes down
// every call.
//
//   ScriptedPlatform platform;                       // installs itself for this thread
//   platform.Answer(Rows{{"ID"}, {{Variant(7)}}});  // the next statement's rows
//   ... EXPECT_EQ(platform.Conversation(), "query [SELECT ...] host= port=0 user= password=
//   timeout=60\n...");
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "sabrel/platform/platform.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel::testing {

struct Rows {
  std::vector<std::string> columns;
  std::vector<std::vector<Variant>> rows;
  /// Fetch number from 1 at which fetching fails, and the failure.
  int fail_at_fetch = 0;
  std::optional<RuntimeError> failure = std::nullopt;
};

/// What the server says when it refuses: a database error, or a connection failure with its code.
struct Refusal {
  std::optional<DatabaseError> database;
  std::int32_t connection_code = 0;
};

using ScriptedAnswer = std::variant<Rows, Refusal, RoutineOutcome>;

[[nodiscard]] Refusal Refuse(std::int32_t native_number, std::string message = "refused");
[[nodiscard]] Refusal ConnectionRefusal(std::int32_t code);

class ScriptedPlatform {
 public:
  ScriptedPlatform() : ScriptedPlatform(nullptr) {}
  /// Statements go to a real session instead, which `open_session` opens for each thread; the rest
  /// is as scripted.
  explicit ScriptedPlatform(std::function<std::shared_ptr<Rowlink>()> open_session);
  ~ScriptedPlatform();
  ScriptedPlatform(const ScriptedPlatform&) = delete;
  ScriptedPlatform& operator=(const ScriptedPlatform&) = delete;

  /// Answers to statements and calls, in order; with none left a query has one column and no rows.
  void Answer(ScriptedAnswer answer);
  /// Forgets the answers that nothing asked for.
  void DropAnswers();

  /// The n-th call of a seam function (locale, names and number questions aside) from here on
  /// throws a failure with number `number`; 0 for none.
  void FailAtCall(int n, std::int32_t number = 1234);
  [[nodiscard]] bool FaultMet() const;

  /// Every call since the last call of this function, a line each.
  [[nodiscard]] std::string Conversation();
  [[nodiscard]] int OpenCursors() const;

  /// What the platform answers.
  bool trace = false;
  std::int32_t box_answer = kAnswerOk;
  std::function<void()> on_box;
  std::function<void()> on_trace;
  LocaleFacts locale;
  std::string product_name = "Norvasta";
  std::string machine_name = "MACHINE";
  std::string domain_name = "DOMAIN";
  std::string spreadsheet_version = "12.0";
  /// Registry values under "path\\name"; a key is there when a value stands in or below it.
  std::map<std::string, std::string> registry;

  struct Script;

 private:
  std::shared_ptr<Script> script_;
};

}  // namespace sabrel::testing
