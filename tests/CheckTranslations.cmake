# Run with cmake -P: LUPDATE, LRELEASE, WORK_DIR and CATALOGUES, joined with ^, each "catalogue.ts|folders|include
# folders|option": the folders (comma-separated) are the sources the catalogue covers and where lupdate finds the
# headers that name the classes' namespaces; the option is empty, or -pluralonly for a catalogue of the source
# language's plural forms. Fails when a text of the sources is missing from a committed catalogue, when a catalogue
# keeps texts the sources no longer have, or when a message is unfinished. The committed catalogues are only read:
# lupdate and lrelease work on copies.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(problems "")
string(REPLACE "^" ";" CATALOGUES "${CATALOGUES}")
foreach(entry IN LISTS CATALOGUES)
    string(REPLACE "|" ";" parts "${entry}")
    list(GET parts 0 catalogue)
    list(GET parts 1 folders)
    list(GET parts 2 includes)
    list(GET parts 3 option)
    string(REPLACE "," ";" folders "${folders}")
    string(REPLACE "," ";-I;" includes "-I;${includes}")
    get_filename_component(name "${catalogue}" NAME_WE)
    set(copy "${WORK_DIR}/${name}.ts")
    file(COPY_FILE "${catalogue}" "${copy}")

    # The same options as the project's update target, so that a refreshed catalogue passes.
    execute_process(COMMAND "${LUPDATE}" -locations none -no-obsolete ${option} ${folders} ${includes} -ts "${copy}"
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(APPEND problems "${name}: lupdate failed (${result}):\n${output}")
        continue()
    endif()
    # A plural-only catalogue counts every other text as new before it strips them; its new plurals show up as
    # unfinished below.
    if(option STREQUAL "-pluralonly")
    elseif(output MATCHES "Found [0-9]+ source text\\(s\\) \\(([0-9]+) new")
        if(NOT CMAKE_MATCH_1 EQUAL 0)
            list(APPEND problems "${name}: ${CMAKE_MATCH_1} text(s) of the sources are not in the catalogue")
        endif()
    else()
        list(APPEND problems "${name}: lupdate did not report its count:\n${output}")
    endif()
    if(output MATCHES "Removed ([0-9]+) obsolete")
        list(APPEND problems "${name}: ${CMAKE_MATCH_1} text(s) of the catalogue are no longer in the sources")
    endif()
    if(output MATCHES "lacks Q_OBJECT|[Cc]annot|[Ww]arning")
        list(APPEND problems "${name}: lupdate complains:\n${output}")
    endif()

    execute_process(COMMAND "${LRELEASE}" "${copy}" -qm "${WORK_DIR}/${name}.qm"
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(APPEND problems "${name}: lrelease failed (${result}):\n${output}")
    elseif(output MATCHES "\\(([0-9]+) finished and ([0-9]+) unfinished\\)")
        if(NOT CMAKE_MATCH_2 EQUAL 0)
            list(APPEND problems "${name}: ${CMAKE_MATCH_2} message(s) are not translated")
        endif()
    else()
        list(APPEND problems "${name}: lrelease did not report its count:\n${output}")
    endif()
endforeach()

if(problems)
    string(JOIN "\n" message ${problems})
    message(FATAL_ERROR "${message}\nRefresh the catalogues with the target update_translations and translate what is "
                        "new (Qt Linguist, or by hand in the .ts files).")
endif()
