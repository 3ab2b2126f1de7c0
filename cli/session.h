// The platform behind the program: Data Servers, console, registry file.
#pragma once

#include <functional>
#include <memory>

#include "cli/context.h"

namespace sabrel::cli {

/// The profile that the options name. Errors: 75 for a profile file that cannot be used; UsageError
/// for an unknown profile name
[[nodiscard]] ConnectionProfile SessionProfileOf(const Options& options);

/// Installs the platform for this thread and returns the session's profile; `conversation` may be
/// null. `on_failed_query` is told after each query that failed, when the error object tells why.
/// Errors: 75 or 321 for a profile or registry file that cannot be used; UsageError for an unknown
/// profile name
ConnectionProfile InstallSession(const Options& options,
                                 std::shared_ptr<AttentiveServices> services,
                                 std::shared_ptr<ConversationLog> conversation,
                                 Interrupts& interrupts, std::function<void()> on_failed_query);

}  // namespace sabrel::cli
