# SQL scripts as C++ constants:
#   sabrel_embed_scripts(<out-var> FOLDER <folder> HEADER <file.h> FUNCTION [<namespace>::]<name> SCRIPTS <script>...)
# sets <out-var> to a source file that defines `sabrel::[<namespace>::]<name>()`, which the header declares as a function
# that returns a std::span of structs of a path and a text: the scripts of the folder, in that order.
set(SABREL_EMBED_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/EmbedScriptsNow.cmake")

function(sabrel_embed_scripts out_var)
  cmake_parse_arguments(ARG "" "FOLDER;HEADER;FUNCTION" "SCRIPTS" ${ARGN})
  set(output "${CMAKE_CURRENT_BINARY_DIR}/${out_var}.cpp")
  list(TRANSFORM ARG_SCRIPTS PREPEND "${ARG_FOLDER}/" OUTPUT_VARIABLE files)
  add_custom_command(
    OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" "-DOUTPUT=${output}" "-DFOLDER=${ARG_FOLDER}" "-DHEADER=${ARG_HEADER}"
            "-DFUNCTION=${ARG_FUNCTION}" "-DSCRIPTS=${ARG_SCRIPTS}" -P "${SABREL_EMBED_SCRIPTS}"
    DEPENDS ${files} "${SABREL_EMBED_SCRIPTS}"
    VERBATIM)
  set(${out_var} "${output}" PARENT_SCOPE)
endfunction()
