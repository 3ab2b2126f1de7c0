// `site create`: a new file with the sample site, or the site in the database of a profile.
#include <sys/stat.h>

#include <filesystem>
#include <memory>

#include "adapters/odbc/postgresql/site_builder.h"
#include "adapters/sqlite/sqlite_rowlink.h"
#include "cli/commands/commands.h"
#include "site/sample_site.h"

namespace sabrel::cli {
namespace {

struct SiteArguments {
  /// Empty where a profile names the database.
  std::string file;
  std::string release = "current";
};

// The builder's failures are not the session's, so that the error object cannot describe them.
[[noreturn]] void Fail(const std::string& where, const DatabaseError& error,
                       const RuntimeError& failure) {
  std::string text = failure.Description();
  if (!error.detail.empty() && error.detail != text) text += " (" + error.detail + ")";
  throw RuntimeError(RuntimeErrorNumber::kAccessFailure,
                     "The site " + where + " was not created: " + text);
}

SiteRelease ReleaseOf(const SiteArguments& arguments) {
  return arguments.release == "old" ? SiteRelease::kOld : SiteRelease::kCurrent;
}

void Tell(Context& context, const std::string& where, const SiteArguments& arguments,
          std::size_t statements) {
  context.Out().Write("Created the site " + where + " (release " + arguments.release + ", " +
                      std::to_string(statements) + " statements).\n");
}

void RequireNoFile(const std::string& file) {
  std::error_code ignored;
  if (std::filesystem::exists(std::filesystem::symlink_status(file, ignored))) {
    throw RuntimeError(RuntimeErrorNumber::kAccessFailure,
                       "The file " + file +
                           " exists already and stays as it is; remove it first or name another "
                           "file");
  }
}

// The journals of a site come to be and go with its users, whose own group they would have.
void NoteFolder(Context& context, const std::string& file) {
  std::filesystem::path folder = std::filesystem::path(file).parent_path();
  if (folder.empty()) folder = ".";
  struct stat facts {};
  constexpr mode_t kNeeded = S_ISGID | S_IRWXG;
  if (::stat(folder.c_str(), &facts) == 0 && (facts.st_mode & kNeeded) == kNeeded) return;
  context.Note("Warning: the group needs to make files in the folder " + folder.string() +
               " too; chgrp GROUP and chmod g+rwxs help there, chgrp GROUP for the site");
}

int CreateFile(Context& context, const SiteArguments& arguments) {
  RequireNoFile(arguments.file);
  const auto statements = SampleSiteStatements(ReleaseOf(arguments));
  std::unique_ptr<sqlite::SiteBuilder> builder;
  try {
    builder = std::make_unique<sqlite::SiteBuilder>(
        arguments.file, context.options.shared ? FileAccess::kGroup : FileAccess::kOwner);
    for (const std::string_view statement : statements) {
      if (context.Signals().Cancelled()) throw OutputCancelled();
      builder->Execute(statement);
    }
    builder->Finish();
  } catch (const RuntimeError& failure) {
    Fail(arguments.file, builder ? builder->Error() : DatabaseError{}, failure);
  }
  Tell(context, arguments.file, arguments, statements.size());
  if (context.options.shared) NoteFolder(context, arguments.file);
  return kDone;
}

int CreateOnServer(Context& context, const SiteArguments& arguments) {
  const ConnectionProfile& profile = context.SessionProfile();
  const std::string where = "in the database " + profile.Database + " of " + profile.Name;
  const auto statements = PostgresqlSiteStatements(ReleaseOf(arguments));
  std::unique_ptr<odbc::SiteBuilder> builder;
  try {
    builder = std::make_unique<odbc::SiteBuilder>(context.Profiles());
    for (const SiteStatement& statement : statements) {
      if (context.Signals().Cancelled()) throw OutputCancelled();
      statement.is_native ? builder->ExecuteNative(statement.text)
                          : builder->Execute(statement.text);
    }
    builder->Finish();
  } catch (const RuntimeError& failure) {
    Fail(where, builder ? builder->Error() : DatabaseError{}, failure);
  }
  Tell(context, where, arguments, statements.size());
  return kDone;
}

int Create(Context& context, const SiteArguments& arguments) {
  const bool has_profile = !context.options.profile_file.empty();
  if (arguments.file.empty() != has_profile) {
    throw UsageError(
        "Name either a new file, or with --profile the PostgreSQL database that is to hold the "
        "site.");
  }
  return has_profile ? CreateOnServer(context, arguments) : CreateFile(context, arguments);
}

}  // namespace

void AddSiteCommands(CLI::App& parent, Context& context) {
  CLI::App* site = parent.add_subcommand(
      "site", "Make sites: files with an embedded Data Server, or on PostgreSQL");
  site->require_subcommand(1);
  site->fallthrough();
  const auto arguments = std::make_shared<SiteArguments>();
  CLI::App& create = AddCommand(*site, context, "create", "Create the sample site",
                                "  sabrel site create plant.site\n"
                                "  sabrel site create --release old before.site\n"
                                "  sabrel --profile servers.ini --profile-name plant site create",
                                [arguments](Context& c) { return Create(c, *arguments); });
  create.add_option("FILE", arguments->file, "The new file; one that exists is refused");
  create.add_option("--release", arguments->release, "Which release's schema and data")
      ->check(CLI::IsMember({"current", "old"}))
      ->capture_default_str();
}

}  // namespace sabrel::cli
