// Whether a document, a remote server, a remote user or the mail set-up may be used.
//
// Documents are bound to groups of remote servers; the database says why such a document cannot
// run. A remote server is tested by looking up a user there. What stands in the way is shown to the
// user, who may go on with a document all the same.
//
//   if (IsServerGroupDocumentValid("Report Definition", Variant(7), "SaveOn")) Save();
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "sabrel/platform/variant.h"

namespace sabrel::MSabrel {

/// Whether a document of type `sAppName` with server group `ordID` may be saved or run. With the
/// save mode "SaveOn" or "RunSaveOn" the user is asked about one that is not valid. True without a
/// question to the database for types that are not bound to servers; false when the database could
/// not be asked. Errors: 13 for an id without text; of the box. Cost: one round trip
[[nodiscard]] bool IsServerGroupDocumentValid(std::string_view sAppName, const Variant& ordID,
                                              std::string_view sSaveMode);

/// The same for the server groups of a job group's reports, one after the other up to the first
/// that is not valid. `sServerName` is not used. Errors: 6, 13; of the box. Cost: one round trip
/// and one a report with a server group
[[nodiscard]] bool IsReportGroupServerDocumentValid(std::string_view sAppName, std::int32_t GrpID,
                                                    std::string_view sSaveMode,
                                                    std::string_view sServerName);

/// Whether user `sUser` can work on the server at `sHost`; what stands in the way is shown always,
/// success only with `bShowMsg`. `sCaption` is not used. Errors: of the box. Cost: one call, on
/// that server
[[nodiscard]] bool TestServerConnection(std::string_view sHost, std::int32_t nPort,
                                        std::string_view sUser, std::string_view sPwd,
                                        std::int32_t nTOut, std::string_view sCaption,
                                        bool bShowMsg);

/// Looks up a user on the server at `sHost`, and creates it where `bCreate` is "TRUE". Returns the
/// server's answer: "TRUE", "USER DOESN'T EXIST" or a text; "Connection Failed" for a database
/// error, which was shown; "" for any other failure. `sPwd` in the form that the routine takes; the
/// trace shows it. Errors: 8 (sabEARemoteUserError) and 9 (sabEADataAdminUserError) for users who
/// may not; of the box. Cost: one call, on that server
[[nodiscard]] std::string FindOrCreateUser(std::string_view sHost, std::int32_t nPort,
                                           std::string_view sUser, std::string_view sPwd,
                                           std::int32_t nTOut, std::string_view bCreate);

/// Whether mail can be sent; `nErrCode` and `sErrMsg` say what the server found.
/// Errors: the call's; 6 for a status beyond 16 bits. Cost: one call
[[nodiscard]] bool Is_SMTP_Ready(std::int32_t& nErrCode, std::string& sErrMsg);

}  // namespace sabrel::MSabrel
