# cmake -DOUTPUT=file.cpp -DSITE_FOLDER=folder "-DSCRIPTS=a.sql;b.sql" -P embed_scripts.cmake
# Writes the scripts as one table of raw string constants.
set(content "#include \"site/site_scripts.h\"\n\nnamespace sabrel {\nnamespace {\n\nconstexpr SiteScript kScripts[] = {\n")
foreach(script IN LISTS SCRIPTS)
  file(READ "${SITE_FOLDER}/${script}" text)
  file(SIZE "${SITE_FOLDER}/${script}" size)
  if(size GREATER 16000)
    message(FATAL_ERROR "${script} is too long for one string constant of every compiler: split it")
  endif()
  string(APPEND content "    {\"${script}\", R\"site(${text})site\"},\n")
endforeach()
string(APPEND content "};\n\n}  // namespace\n\nstd::span<const SiteScript> SiteScripts() { return kScripts; }\n\n}  // namespace sabrel\n")
file(WRITE "${OUTPUT}" "${content}")
