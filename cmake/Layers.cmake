# One static library a folder. A folder's headers are reached as "folder/Header.h", and only by the targets that link it:
# each library exports a directory that holds nothing but a link to its own folder, so an include that points upwards
# does not compile.

add_library(quillo_options INTERFACE)
target_compile_options(quillo_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2
  -Wimplicit-fallthrough -Wunused)
if(QUILLO_WERROR)
  target_compile_options(quillo_options INTERFACE -Werror)
endif()
target_compile_definitions(quillo_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(QUILLO_SANITIZE)
  target_compile_options(quillo_options INTERFACE -fsanitize=${QUILLO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(quillo_options INTERFACE -fsanitize=${QUILLO_SANITIZE})
elseif(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  target_compile_options(quillo_options INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -fstack-protector-strong)
  target_link_options(quillo_options INTERFACE -Wl,-z,relro,-z,now)
endif()

# quillo_moc_new_headers(TARGET FILE...): lets the meta-object compiler look at headers that came since it last ran. By
# itself it runs again only for those that it knows, and a new one would be missing when the target is linked.
function(quillo_moc_new_headers target)
  set(list ${CMAKE_CURRENT_BINARY_DIR}/${target}_headers.txt)
  set(known)
  if(EXISTS ${list})
    file(READ ${list} known)
  endif()
  if(NOT "${known}" STREQUAL "${ARGN}")
    file(REMOVE ${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/timestamp)
    file(WRITE ${list} "${ARGN}")
  endif()
endfunction()

# quillo_expose(TARGET FOLDER): lets whoever links TARGET include "FOLDER/...".
function(quillo_expose target folder)
  set(view ${CMAKE_BINARY_DIR}/include/${target})
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY ${view}/${parent})
  if(NOT EXISTS ${view}/${folder})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${view}/${folder} SYMBOLIC)
  endif()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "INTERFACE_LIBRARY")
    target_include_directories(${target} INTERFACE ${view})
  else()
    target_include_directories(${target} PUBLIC ${view})
  endif()
endfunction()

# quillo_module(NAME SOURCE... [LINK lib...]): what foundation/LoadableModule loads when it is first needed, so that the
# program starts without the libraries that only this part takes. It may use what the program exports.
function(quillo_module name)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  add_library(${name} MODULE ${ARG_UNPARSED_ARGUMENTS})
  # Beside the programs in the build. Installed deep below, it is plainly nothing that others should link: the packager
  # would announce it to the linker otherwise.
  set_target_properties(${name} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  target_link_libraries(${name} PRIVATE ${ARG_LINK} quillo_options)
  install(TARGETS ${name} LIBRARY DESTINATION lib/quillo-agent/modules)
endfunction()

# quillo_layer(TARGET [LINK lib...] [PRIVATE lib...] [EXCEPT file...]): the folder's sources, without those of its folders,
# which are layers of their own, as one library, or as headers only where it has no source.
function(quillo_layer target)
  cmake_parse_arguments(ARG "" "" "LINK;PRIVATE;EXCEPT" ${ARGN})
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${CMAKE_SOURCE_DIR} OUTPUT_VARIABLE folder)
  file(GLOB sources CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *.cpp)
  file(GLOB headers CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *.h)
  if(ARG_EXCEPT)
    list(REMOVE_ITEM sources ${ARG_EXCEPT})
    list(REMOVE_ITEM headers ${ARG_EXCEPT})
  endif()
  if(sources)
    add_library(${target} STATIC ${sources} ${headers})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    quillo_moc_new_headers(${target} ${headers})
    target_link_libraries(${target} PUBLIC ${ARG_LINK} PRIVATE quillo_options ${ARG_PRIVATE})
  else()
    add_library(${target} INTERFACE)
    target_link_libraries(${target} INTERFACE ${ARG_LINK})
  endif()
  quillo_expose(${target} ${folder})
endfunction()
