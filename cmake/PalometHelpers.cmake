# Compiler warnings shared by every Palomet target.
function(palomet_set_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wno-missing-field-initializers)
    if(PALOMET_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

# palomet_add_test(tst_Name DEPENDS lib... SOURCES file... [GUI])
# One QtTest executable, registered with ctest under its own name.
function(palomet_add_test name)
    cmake_parse_arguments(arg "GUI" "" "DEPENDS;SOURCES;LABELS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_DEPENDS} Qt6::Test)
    palomet_set_warnings(${name})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    # Each test starts from its own empty data, cache and config folders, so that journals,
    # caches and settings neither come from the user's home nor from an earlier run.
    set(home ${CMAKE_BINARY_DIR}/test-home/${name})
    add_test(NAME ${name}
        COMMAND sh -c "rm -rf \"$1\" && mkdir -p \"$1\" && exec \"$0\"" $<TARGET_FILE:${name}> ${home})
    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QTWEBENGINE_DISABLE_SANDBOX=1;LC_ALL=C.UTF-8;XDG_DATA_HOME=${home}/data;XDG_CACHE_HOME=${home}/cache;XDG_CONFIG_HOME=${home}/config")
    if(arg_LABELS)
        set_tests_properties(${name} PROPERTIES LABELS "${arg_LABELS}")
    endif()
endfunction()

# palomet_add_bench(name SOURCES file... [DEPENDS lib...]): build/bench/bench_<name>.
function(palomet_add_bench name)
    cmake_parse_arguments(arg "" "" "DEPENDS;SOURCES" ${ARGN})
    add_executable(bench_${name} ${arg_SOURCES})
    target_link_libraries(bench_${name} PRIVATE ${arg_DEPENDS})
    palomet_set_warnings(bench_${name})
    set_target_properties(bench_${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bench)
    add_dependencies(benchmarks bench_${name})
endfunction()

# The core must stay free of the GUI modules so that it builds and runs without a display.
function(palomet_check_core_links target)
    get_target_property(libs ${target} LINK_LIBRARIES)
    get_target_property(ilibs ${target} INTERFACE_LINK_LIBRARIES)
    foreach(lib IN LISTS libs ilibs)
        if(lib MATCHES "Qt[0-9]*::(Gui|Widgets|WebEngine)")
            message(FATAL_ERROR "${target} must not link ${lib}: it holds logic and data only")
        endif()
    endforeach()
endfunction()
