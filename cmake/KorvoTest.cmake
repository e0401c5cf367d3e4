# korvo_add_test(NAME [SOURCES ...] LIBRARIES ... [DESKTOP tray...] [SCALES factor...] [ENVIRONMENT ...]
#                [TIMEOUT seconds])
# One test program from NAME.cpp (and more SOURCES), registered with CTest. It runs with a home folder of its own and
# without the caller's display and bus; with DESKTOP once inside a headless desktop for each tray named
# (mate, xfce, ayatana, xembed, none), with SCALES once for each scale of the screen.
function(korvo_add_test NAME)
    cmake_parse_arguments(PARSE_ARGV 1 test "" "TIMEOUT" "SOURCES;LIBRARIES;DESKTOP;SCALES;ENVIRONMENT")
    if(NOT test_TIMEOUT)
        set(test_TIMEOUT 120)
    endif()
    add_executable(${NAME} ${NAME}.cpp ${test_SOURCES})
    target_include_directories(${NAME} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(${NAME} PRIVATE korvo_compiler Qt6::Test ${test_LIBRARIES})
    if(test_DESKTOP)
        foreach(tray IN LISTS test_DESKTOP)
            add_test(NAME ${NAME}.${tray}
                     COMMAND "${PROJECT_SOURCE_DIR}/scripts/isolated" "${PROJECT_SOURCE_DIR}/scripts/desktop-session"
                             $<TARGET_FILE:${NAME}>)
            set_tests_properties(${NAME}.${tray} PROPERTIES TIMEOUT ${test_TIMEOUT} LABELS desktop
                                 ENVIRONMENT "DESKTOP_TRAY=${tray};${test_ENVIRONMENT}")
        endforeach()
    elseif(test_SCALES)
        foreach(scale IN LISTS test_SCALES)
            add_test(NAME ${NAME}.scale-${scale}
                     COMMAND "${PROJECT_SOURCE_DIR}/scripts/isolated" $<TARGET_FILE:${NAME}>)
            set_tests_properties(${NAME}.scale-${scale} PROPERTIES TIMEOUT ${test_TIMEOUT} ENVIRONMENT
                                 "QT_QPA_PLATFORM=offscreen;QT_SCALE_FACTOR=${scale};${test_ENVIRONMENT}")
        endforeach()
    else()
        add_test(NAME ${NAME} COMMAND "${PROJECT_SOURCE_DIR}/scripts/isolated" $<TARGET_FILE:${NAME}>)
        set_tests_properties(${NAME} PROPERTIES TIMEOUT ${test_TIMEOUT}
                             ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${test_ENVIRONMENT}")
    endif()
endfunction()

# korvo_add_desktop_variant(TEST SUFFIX ENVIRONMENT...): one more run of a test on a desktop without a tray, with other
# settings.
function(korvo_add_desktop_variant TEST SUFFIX)
    add_test(NAME ${TEST}.${SUFFIX}
             COMMAND "${PROJECT_SOURCE_DIR}/scripts/isolated" "${PROJECT_SOURCE_DIR}/scripts/desktop-session"
                     $<TARGET_FILE:${TEST}>)
    set_tests_properties(${TEST}.${SUFFIX} PROPERTIES TIMEOUT 180 LABELS desktop ENVIRONMENT "DESKTOP_TRAY=none;${ARGN}")
endfunction()
