// The engine's own tables and the dictionary views of a site.
#pragma once

#include <cstdint>

namespace sabrel::sqlite {

/// Marks a file as a site of this server (the database header's application id).
inline constexpr std::int64_t kSiteMark = 0x53425244;

/// Statements that make an empty database a site.
[[nodiscard]] const char* CatalogueSql() noexcept;

}  // namespace sabrel::sqlite
