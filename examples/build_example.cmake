# Builds a sample database from a CSV file whose header names the fields as NAME:TYPE[:LENGTH].
# Run as: cmake -DQVDB=... -DCSV=... -DOUT=... -P build_example.cmake
get_filename_component(db_name "${OUT}" NAME_WE)
execute_process(COMMAND "${QVDB}" new "${OUT}" --force --name "${db_name}" --from-csv "${CSV}"
                        --date-format yyyy-MM-dd
                RESULT_VARIABLE rc OUTPUT_QUIET)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "qvdb new --from-csv failed for ${OUT}")
endif()
