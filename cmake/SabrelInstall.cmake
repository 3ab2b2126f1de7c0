# Installation: headers, libraries, the exported package `Sabrel` and a pkg-config file.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Sabrel)

install(TARGETS sabrel_sabrel sabrel_adapter_shared sabrel_sqlite sabrel_odbc sabrel_servers sabrel_console EXPORT SabrelTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS sabrel_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(EXPORT SabrelTargets NAMESPACE sabrel:: DESTINATION ${package_dir})

install(DIRECTORY sabrel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h"
  PATTERN "thread_holder.h" EXCLUDE)
# What hosts include of the adapters; none of it wants a library's own headers.
install(DIRECTORY adapters/console DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/adapters FILES_MATCHING PATTERN "*.h")
foreach(header
    odbc/odbc_rowlink.h
    odbc/postgresql/site_builder.h
    servers/server_rowlink.h
    shared/conversation.h
    shared/file_access.h
    shared/profiles.h
    shared/section_settings.h
    sqlite/site_builder.h
    sqlite/sqlite_rowlink.h)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES adapters/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/adapters/${folder})
endforeach()

configure_package_config_file(cmake/SabrelConfig.cmake.in ${PROJECT_BINARY_DIR}/SabrelConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/SabrelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/SabrelConfig.cmake ${PROJECT_BINARY_DIR}/SabrelConfigVersion.cmake
  DESTINATION ${package_dir})

# Relative, so that an installed tree may be moved or installed under another prefix than it was configured for.
file(RELATIVE_PATH SABREL_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/sabrel.pc.in ${PROJECT_BINARY_DIR}/sabrel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/sabrel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
