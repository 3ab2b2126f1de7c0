// A site in a temporary folder, and short ways to ask it.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "adapters/sqlite/sqlite_rowlink.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/locale_facts.h"
#include "tests/support/sample_site_copy.h"

namespace sabrel::testing {

inline ConnectionProfile ProfileOf(const std::string& file) {
  return {"site", "sqlite", "", 0, file, "", "", 0, 0};
}

/// A value as text that tells its kind: 5, 2.5, 'text', date 2024-03-09 17:05:00, null.
inline std::string Shown(const Variant& value) {
  switch (value.kind()) {
    case VariantKind::kNull: return "null";
    case VariantKind::kString: return "'" + value.Get<std::string>() + "'";
    case VariantKind::kDate: return "date " + FormatDateTime(value.Get<Date>(), LocaleFacts{});
    case VariantKind::kDecimal: return "decimal " + value.Get<Decimal>().Text();
    case VariantKind::kDouble: return "double " + NumberText(value.Get<double>(), 15, ".");
    default: return ToText(value, LocaleFacts{});
  }
}

class Asking {
 public:
  explicit Asking(ProfileSet profiles) : link(MakeSqliteRowlink(std::move(profiles))) {}
  explicit Asking(const std::string& file) : Asking(ProfileSet(ProfileOf(file))) {}

  /// The rows of `sql`: cells with "|", rows with ";" between; or "ORA-n", "connection n".
  std::string Ask(std::string_view sql, std::int32_t timeout_s = 0) {
    return Tried([&] {
      const auto rows = link->MakeRecordset();
      rows->Open(sql, "", 0, "", "", timeout_s);
      std::string text;
      for (; !rows->EndOfFile(); rows->MoveNext()) {
        if (!text.empty()) text += ';';
        for (std::int32_t i = 0; i < rows->Fields().Count(); ++i) {
          text += (i > 0 ? "|" : "") + Shown(rows->Fields().Item(i).Value());
        }
      }
      return text;
    });
  }
  /// "" when done, else as Ask.
  std::string Do(std::string_view sql, std::int32_t timeout_s = 0) {
    return Tried([&] {
      link->MakeRecordset()->Execute(sql, "", 0, "", "", timeout_s);
      return std::string();
    });
  }
  /// Statements that make what a test works on.
  void Make(std::initializer_list<const char*> statements) {
    for (const char* sql : statements) {
      ASSERT_EQ(Do(sql), "") << sql << ": " << link->LastDatabaseError().message;
    }
  }
  template <class Work>
  std::string Tried(Work&& work) {
    try {
      return work();
    } catch (const RuntimeError& failure) {
      if (CarriedCode(failure.Number()) == kDatabaseErrorCode) {
        return "ORA-" + std::to_string(link->LastDatabaseError().native_number);
      }
      return "connection " + std::to_string(link->ConnectionErrorCode(failure.Number()));
    }
  }

  std::shared_ptr<Rowlink> link;
};

/// A child process that ends with the result of `work`.
template <class Work>
pid_t InChild(Work work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work());
  return child;
}
/// What a child process came to.
inline int ResultOf(pid_t child) {
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// A fresh site per test.
class SiteTest : public ::testing::Test, public Asking {
 protected:
  SiteTest() : SiteTest(std::make_unique<TemporaryFolder>()) {}
  explicit SiteTest(std::unique_ptr<TemporaryFolder> folder)
      : Asking(Created(*folder)), folder_(std::move(folder)) {}
  [[nodiscard]] std::string File() const { return folder_->Path("plant.site"); }
  [[nodiscard]] const TemporaryFolder& Folder() const { return *folder_; }

 private:
  static std::string Created(const TemporaryFolder& folder) {
    sqlite::CreateDatabase(folder.Path("plant.site"));
    return folder.Path("plant.site");
  }
  std::unique_ptr<TemporaryFolder> folder_;
};

}  // namespace sabrel::testing
