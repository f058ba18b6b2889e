# One helper per kind of target, so that a list file is only a list.

# Precompiled headers are compiled once for each set of Qt modules and shared by all targets with it:
# the compiler takes one only where the modules' macros are the same.
function(_trovek_add_pch name)
  cmake_parse_arguments(arg "" "" "LINK;HEADERS" ${ARGN})
  add_library(${name} OBJECT ${CMAKE_SOURCE_DIR}/cmake/pch.cpp)
  set_target_properties(${name} PROPERTIES AUTOMOC OFF AUTORCC OFF)
  target_link_libraries(${name} PRIVATE PkgConfig::JsonCpp ${arg_LINK})
  target_precompile_headers(${name} PRIVATE
    <json/json.h> <functional> <map> <memory> <set> <string> <vector> ${arg_HEADERS})
endfunction()
_trovek_add_pch(trovek_core_pch LINK Qt5::Network HEADERS <QtCore> <QtNetwork>)
_trovek_add_pch(trovek_widgets_pch LINK Qt5::Widgets Qt5::Network HEADERS <QtWidgets> <QtNetwork>)
_trovek_add_pch(trovek_test_pch LINK Qt5::Test Qt5::Widgets Qt5::Network
                HEADERS <QtWidgets> <QtNetwork> <QtTest>)

# trovek_add_library(name [STATIC] [CORE] [EXPORT_HEADER folder/export.h] HEADERS ... SOURCES ... LINK ... PRIVATE_LINK ...)
#
# A shared library of the platform or the library itself, found in includes by its folder's name:
# <name/header.h>. CORE is for those without widgets. EXPORT_HEADER names the generated header with NAME_EXPORT, e.g. "trovek/export.h".
function(trovek_add_library name)
  cmake_parse_arguments(arg "STATIC;CORE" "EXPORT_HEADER" "HEADERS;SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  if(arg_STATIC)
    add_library(${name} STATIC ${arg_HEADERS} ${arg_SOURCES})
  else()
    add_library(${name} SHARED ${arg_HEADERS} ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  endif()
  add_library(trovek-ui::${name} ALIAS ${name})
  if(arg_EXPORT_HEADER)
    string(MAKE_C_IDENTIFIER ${name} base)
    generate_export_header(${name} BASE_NAME ${base}
                           EXPORT_FILE_NAME ${CMAKE_BINARY_DIR}/include/${arg_EXPORT_HEADER})
  endif()
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include>
    $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/platform>
    $<BUILD_INTERFACE:${CMAKE_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${name} PUBLIC ${arg_LINK} PRIVATE ${arg_PRIVATE_LINK})
  _trovek_reuse_pch(${name} ${arg_CORE})
endfunction()

function(_trovek_reuse_pch name core)
  if(core)
    target_link_libraries(${name} PRIVATE Qt5::Network)
    target_precompile_headers(${name} REUSE_FROM trovek_core_pch)
  else()
    target_link_libraries(${name} PRIVATE Qt5::Widgets Qt5::Network)
    target_precompile_headers(${name} REUSE_FROM trovek_widgets_pch)
  endif()
endfunction()

# trovek_add_program(name [CORE] SOURCES ... LINK ...)
function(trovek_add_program name)
  cmake_parse_arguments(arg "CORE" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINK})
  _trovek_reuse_pch(${name} ${arg_CORE})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endfunction()

# trovek_add_test(tst_unit [X11] SOURCES ... LINK ... [LABELS ...] [TIMEOUT seconds])
#
# One test program per unit; the source tst_unit.cpp is implied. X11 marks what needs a real X server.
function(trovek_add_test name)
  cmake_parse_arguments(arg "X11" "TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${name}.cpp ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE Qt5::Test Qt5::Widgets Qt5::Network ${arg_LINK})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests ${CMAKE_SOURCE_DIR})
  target_precompile_headers(${name} REUSE_FROM trovek_test_pch)
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  set(platform offscreen)
  if(arg_X11)
    set(platform xcb)
  endif()
  set_tests_properties(${name} PROPERTIES
    TIMEOUT ${arg_TIMEOUT}
    LABELS "${arg_LABELS}"
    ENVIRONMENT "QT_QPA_PLATFORM=${platform};LC_ALL=C.UTF-8;QT_LOGGING_RULES=qt.qpa.*=false")
  if(arg_X11)
    # Windows of two tests would lie over each other in the pictures.
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK display)
  else()
    # The offscreen platform would borrow OpenGL from a display that happens to be there.
    set_tests_properties(${name} PROPERTIES ENVIRONMENT_MODIFICATION DISPLAY=unset:)
  endif()
  if(TROVEK_SANITIZE)
    math(EXPR arg_TIMEOUT "${arg_TIMEOUT} * 4")
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
    # Whole stacks tell the toolkit's own leaks from ours, but cost minutes where much is allocated.
    set(unwinding 1)
    if(arg_LINK MATCHES "trovek-ui|ostrand-lib")
      set(unwinding 0)
    endif()
    # What the OpenGL driver leaks has no name any more when it is told: the driver is unloaded then.
    # Besides, whole stacks are found under a lock that is held while the driver tells of its code.
    set(leaks 1)
    if(arg_X11)
      set(leaks 0)
      set(unwinding 1)
    endif()
    set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT
      ASAN_OPTIONS=fast_unwind_on_malloc=${unwinding}:detect_leaks=${leaks}
      LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/support/lsan.supp:print_suppressions=0)
  endif()
endfunction()
