// The platform behind the program: Data Servers, console, registry file.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "adapters/shared/profiles.h"
#include "cli/context.h"

namespace sabrel::cli {

struct SessionProfiles {
  ProfileSet set;
  /// As ProfileFile's.
  std::vector<std::string> warnings = {};
};

/// The profiles that the options name. Errors: 75 for a profile file that cannot be used;
/// UsageError for an unknown profile name
[[nodiscard]] SessionProfiles ReadSessionProfiles(const Options& options);

/// The files that a run with these options reads, standard input among them.
[[nodiscard]] ReservedFiles InputsOf(const Options& options, const ProfileSet& profiles);

/// Installs the platform for this thread; `conversation` may be null. `on_failed_query` is told
/// after each query that failed, when the error object tells why. Errors: 75 or 321 for a registry
/// file that cannot be used
void InstallSession(const Options& options, const SessionProfiles& profiles,
                    std::shared_ptr<AttentiveServices> services,
                    std::shared_ptr<ConversationLog> conversation, Interrupts& interrupts,
                    std::function<void()> on_failed_query);

}  // namespace sabrel::cli
