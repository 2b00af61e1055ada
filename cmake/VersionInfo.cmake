# Writes Version.info: product name, version, number of commits, build time in UTC (SOURCE_DATE_EPOCH is honoured).
execute_process(COMMAND git rev-list --count HEAD
    WORKING_DIRECTORY "${SOURCE_DIR}" OUTPUT_VARIABLE build OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(NOT build)
    set(build 0)
endif()
string(TIMESTAMP time "%Y-%m-%d %H:%M:%S" UTC)
file(WRITE "${OUTPUT}" "Varnholt\n${VERSION}\n${build}\n${time}\n")
