# How our rooms, programs and tests are built. A room is a folder and a library; it links only what
# its folder may use, so that an include in the wrong direction has nothing to link with.

add_library(brightledger_options INTERFACE)
target_include_directories(brightledger_options INTERFACE
    ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/generated)
target_compile_options(brightledger_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror
    # GCC 12 sees an overlap in `"text" + string` where there is none.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(CMAKE_UNITY_BUILD)
    # Several sources stand in one: what is private to each is no longer private to the compiler. The
    # debug build, one source at a time, still warns of both.
    target_compile_options(brightledger_options INTERFACE -Wno-subobject-linkage -Wno-shadow)
endif()
if(BRIGHTLEDGER_SANITIZE)
    target_compile_options(brightledger_options INTERFACE
        -fsanitize=${BRIGHTLEDGER_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined
        # The address sanitizer finds the accesses that these two would warn of, and compiles sooner.
        -fno-sanitize=object-size,pointer-overflow
        # The instrumentation confuses these two.
        -Wno-maybe-uninitialized -Wno-stringop-overflow)
    target_link_options(brightledger_options INTERFACE -fsanitize=${BRIGHTLEDGER_SANITIZE})
endif()
if(BRIGHTLEDGER_SANITIZE STREQUAL "thread")
    # The thread sanitizer does not understand fences; everything that they guard also goes through a mutex.
    target_compile_definitions(brightledger_options INTERFACE BOOST_ASIO_DISABLE_FENCED_BLOCK)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

# brightledger_room(NAME [USES LIBRARY...] [USES_PRIVATELY LIBRARY...])
# The library of the current folder's sources.
function(brightledger_room name)
    cmake_parse_arguments(ROOM "" "" "USES;USES_PRIVATELY" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS *.cpp)
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
    if(sources)
        add_library(${name} STATIC ${sources})
        target_link_libraries(${name}
            PUBLIC brightledger_options ${ROOM_USES}
            PRIVATE ${ROOM_USES_PRIVATELY})
    else()
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE brightledger_options ${ROOM_USES})
    endif()
endfunction()

# All that protoc makes, for tools that read sources without building them.
add_custom_target(generated)

# brightledger_messages(NAME FILE.proto [USES LIBRARY...])
# The classes that protoc makes of a schema in the current folder, without our warnings.
function(brightledger_messages name schema)
    cmake_parse_arguments(MESSAGES "" "" "USES" ${ARGN})
    cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR}
               OUTPUT_VARIABLE folder)
    cmake_path(GET schema STEM stem)
    set(output ${PROJECT_BINARY_DIR}/generated/${folder}/${stem}.pb)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/generated/${folder})
    add_custom_command(
        OUTPUT ${output}.cc ${output}.h
        COMMAND protobuf::protoc --proto_path=${PROJECT_SOURCE_DIR}
                --cpp_out=${PROJECT_BINARY_DIR}/generated ${CMAKE_CURRENT_SOURCE_DIR}/${schema}
        DEPENDS ${schema}
        VERBATIM)
    add_library(${name} STATIC ${output}.cc ${output}.h)
    target_include_directories(${name} SYSTEM PUBLIC ${PROJECT_BINARY_DIR}/generated)
    target_link_libraries(${name} PUBLIC ${MESSAGES_USES})
    add_custom_target(${name}_generated DEPENDS ${output}.h)
    add_dependencies(generated ${name}_generated)
    if(BRIGHTLEDGER_SANITIZE)
        target_compile_options(${name} PRIVATE -fsanitize=${BRIGHTLEDGER_SANITIZE})
    endif()
endfunction()

# brightledger_program(NAME [USES LIBRARY...])
# The program of the current folder's main.cpp.
function(brightledger_program name)
    cmake_parse_arguments(PROGRAM "" "" "USES" ${ARGN})
    add_executable(${name} main.cpp)
    target_link_libraries(${name} PRIVATE brightledger_options ${PROGRAM_USES})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${BRIGHTLEDGER_PROGRAM_DIR})
    install(TARGETS ${name} RUNTIME DESTINATION bin)
endfunction()

# brightledger_tests(NAME [FOLDER FOLDER...] [USES LIBRARY...] [NEEDS TARGET...])
# One test program of all *_test.cpp in the folders below tests/.
include(GoogleTest)
function(brightledger_tests name)
    cmake_parse_arguments(TESTS "" "" "FOLDER;USES;NEEDS" ${ARGN})
    set(sources)
    foreach(folder ${TESTS_FOLDER})
        file(GLOB found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/${folder}/*_test.cpp)
        list(APPEND sources ${found})
    endforeach()
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE brightledger_options ${TESTS_USES}
                          GTest::gmock GTest::gtest_main)
    if(TESTS_NEEDS)
        add_dependencies(${name} ${TESTS_NEEDS})
    endif()
    target_compile_definitions(${name} PRIVATE
        BRIGHTLEDGER_PROGRAM_DIR="${BRIGHTLEDGER_PROGRAM_DIR}"
        BRIGHTLEDGER_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
endfunction()
