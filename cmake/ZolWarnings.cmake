# zol_target_defaults(<target>): the warning set and sanitizer flags every target of ours uses.
function(zol_target_defaults target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(ZOL_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  # GCC 12 reports a false -Wrestrict overlap inside std::string's operator+ at -O2 and above
  # (GCC bug 105329); the warning says nothing about our code there.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12
     AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
endfunction()

if(ZOL_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# zol_add_subdirs(): adds every immediate subfolder that has a CMakeLists.txt, so a new unit is
# picked up without touching its parent.
macro(zol_add_subdirs)
  file(GLOB _zol_children LIST_DIRECTORIES true RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/*)
  list(SORT _zol_children)
  foreach(_zol_child IN LISTS _zol_children)
    if(IS_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/${_zol_child} AND EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${_zol_child}/CMakeLists.txt)
      add_subdirectory(${_zol_child})
    endif()
  endforeach()
endmacro()

# zol_library(<name> [STATIC|SHARED] LIBS <deps...>): a library of all .cpp files in the folder.
function(zol_library name)
  cmake_parse_arguments(ARG "SHARED" "" "LIBS;SOURCES" ${ARGN})
  if(ARG_SOURCES)
    set(_srcs ${ARG_SOURCES})
  else()
    file(GLOB _srcs CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h ${CMAKE_CURRENT_SOURCE_DIR}/*.qrc)
  endif()
  if(ARG_SHARED)
    add_library(${name} SHARED ${_srcs})
  else()
    add_library(${name} STATIC ${_srcs})
  endif()
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_LIBS})
  zol_target_defaults(${name})
endfunction()
