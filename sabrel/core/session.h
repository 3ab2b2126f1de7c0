// What the component knows of its session: connection strings, machine, installation, product.
//
// All of it belongs to the calling thread and lasts until `UnloadThread`. A host calls
// LoadMachineInfo first (it needs no database), sets the connection strings, then LoadMachineId and
// InitializeProductInfo; an operation that is called too early sees initial values.
// ShutdownDBConnection is the last call.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sabrel::MSabrel {

/// This machine's id in PM_ClientMachine, whose row is inserted on first use; 0 when it cannot be
/// learned, and the next call tries again. Cost: none once known; else one to three round trips
/// Errors: of the insert
[[nodiscard]] std::int32_t MachineId();

/// Errors: 4 (sabMachineIdError) when the id stays 0; of the insert. Cost: as MachineId
void LoadMachineId();

/// Reads the installation's settings from the registry and hands its folder, ending in a backslash,
/// to the application. Without the key or its "Setup" subkey the settings keep what they were.
/// Errors: 1 (sabProductInstallationError) without an installation folder; of the registry. Cost:
/// no round trip
void LoadMachineInfo();

// False until LoadMachineInfo has read them.
[[nodiscard]] bool IsSubclassingOn();
[[nodiscard]] bool IncludeDSMonitor();
[[nodiscard]] bool IncludeAddInManager();

/// Reads PM_PRODUCT_INFO anew and hands the product's properties to the application.
/// Errors: 12 (sabProductInfoError) naming the first required property that is empty; failures of
/// the reading itself are not raised. Cost: one round trip
void InitializeProductInfo();

/// A property of PM_PRODUCT_INFO, "" when there is none. The table is read on first use, once, also
/// when that fails. Cost: none, or one round trip on first use
[[nodiscard]] std::string ProductProperty(std::string_view name);

/// Ends the use of the Data Server's connections. Errors: none
void ShutdownDBConnection() noexcept;

// Kept and handed out as they are; statements do not consult them.
[[nodiscard]] std::string DBConnectionName();
void DBConnectionName(std::string_view value);
[[nodiscard]] std::string DBConnectionUID();
void DBConnectionUID(std::string_view value);
[[nodiscard]] std::string DBConnectionPWD();
void DBConnectionPWD(std::string_view value);

}  // namespace sabrel::MSabrel
