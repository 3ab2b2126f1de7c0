// A site of the embedded Data Server for targets that ask one.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "sabrel/platform/rowlink.h"

namespace sabrel::fuzz {

/// Installs a platform with the usual locale whose Data Server is an empty site; later calls do
/// nothing.
void UsePlatform();
/// The first value of the platform's answer; nothing where it refuses the query or gives no row.
[[nodiscard]] std::optional<Variant> FirstValue(std::string_view sql);

}  // namespace sabrel::fuzz
