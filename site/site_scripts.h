// The embedded scripts of the sample site, in the order in which they run. The table is generated
// at build time.
#pragma once

#include <span>
#include <string_view>

namespace sabrel {

struct SiteScript {
  /// Path within the site folder: "schema/current/task_filename.sql".
  std::string_view path;
  std::string_view text;
};

[[nodiscard]] std::span<const SiteScript> SiteScripts();

}  // namespace sabrel
