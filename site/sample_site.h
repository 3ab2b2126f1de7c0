// The sample site: schema, stored routines and data of a small installation, as the statements that
// build it.
//
// The texts are Oracle's dialect and come from the .sql files beside this header, embedded at build
// time. They go to an empty database one by one, in order. Later releases brought objects of their
// own; the old release leaves them out: the feature switches, the sizes of output files, the
// package LengthyReport, the count of equivalents and the list of network systems.
//
//   for (std::string_view statement : SampleSiteStatements(SiteRelease::kCurrent))
//   Execute(statement);
#pragma once

#include <string_view>
#include <vector>

namespace sabrel {

enum class SiteRelease { kCurrent, kOld };

/// The statements of a site, without comments; a routine's text ends in its "END;".
/// Shape:  views of texts that live as long as the program
/// Errors: none
/// Cost:   no round trip; the first call splits the texts. Any thread
[[nodiscard]] std::vector<std::string_view> SampleSiteStatements(SiteRelease release);

struct SiteStatement {
  std::string_view text;
  /// In the server's own language, to be sent as it stands; otherwise Oracle's.
  bool is_native = false;
};

/// As SampleSiteStatements, for PostgreSQL: the stored routines are in its own language.
[[nodiscard]] std::vector<SiteStatement> PostgresqlSiteStatements(SiteRelease release);

}  // namespace sabrel
