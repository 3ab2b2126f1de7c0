// `site create`: a new file with the sample site.
#include <filesystem>
#include <memory>

#include "adapters/console/access_failure.h"
#include "adapters/sqlite/sqlite_rowlink.h"
#include "cli/commands/commands.h"
#include "site/sample_site.h"

namespace sabrel::cli {
namespace {

struct SiteArguments {
  std::string file;
  std::string release = "current";
};

// The builder's failures are not the session's, so that the error object cannot describe them.
[[noreturn]] void Fail(const SiteArguments& arguments, const DatabaseError& error,
                       const RuntimeError& failure) {
  std::string text = failure.Description();
  if (!error.detail.empty() && error.detail != text) text += " (" + error.detail + ")";
  throw RuntimeError(kAccessFailure, "Sabrel",
                     "The site " + arguments.file + " was not created: " + text);
}

void RequireNoFile(const std::string& file) {
  std::error_code ignored;
  if (std::filesystem::exists(std::filesystem::symlink_status(file, ignored))) {
    throw RuntimeError(kAccessFailure, "Sabrel",
                       "The file " + file +
                           " exists already and stays as it is; remove it first or name another "
                           "file");
  }
}

int Create(Context& context, const SiteArguments& arguments) {
  RequireNoFile(arguments.file);
  const auto release = arguments.release == "old" ? SiteRelease::kOld : SiteRelease::kCurrent;
  const auto statements = SampleSiteStatements(release);
  std::unique_ptr<sqlite::SiteBuilder> builder;
  try {
    builder = std::make_unique<sqlite::SiteBuilder>(arguments.file);
    for (const std::string_view statement : statements) {
      if (context.Signals().Cancelled()) throw OutputCancelled();
      builder->Execute(statement);
    }
    builder->Finish();
  } catch (const RuntimeError& failure) {
    Fail(arguments, builder ? builder->Error() : DatabaseError{}, failure);
  }
  context.Out().Write("Created the site " + arguments.file + " (release " + arguments.release +
                      ", " + std::to_string(statements.size()) + " statements).\n");
  return kDone;
}

}  // namespace

void AddSiteCommands(CLI::App& parent, Context& context) {
  CLI::App* site = parent.add_subcommand("site", "Make sites: files with an embedded Data Server");
  site->require_subcommand(1);
  site->fallthrough();
  const auto arguments = std::make_shared<SiteArguments>();
  CLI::App& create = AddCommand(*site, context, "create", "Create a file with the sample site",
                                "  sabrel site create plant.site\n"
                                "  sabrel site create --release old before.site",
                                [arguments](Context& c) { return Create(c, *arguments); });
  create.add_option("FILE", arguments->file, "The new file; one that exists is refused")
      ->required();
  create.add_option("--release", arguments->release, "Which release's schema and data")
      ->check(CLI::IsMember({"current", "old"}))
      ->capture_default_str();
}

}  // namespace sabrel::cli
