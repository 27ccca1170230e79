# mx_generate(TARGET name SCHEMAS a.xsd [b.xsd...] [NAMESPACES URI=cpp::ns ...] [BASENAME name])
#
# Compiles the schemas to C++ with `mx generate` at build time, into a static
# library `name` that links MxXmlLib and puts the generated header on its
# include path. The sources are made again when a schema or mx changes; an
# unchanged output keeps its time, so nothing that depends on it rebuilds.
function(mx_generate)
  cmake_parse_arguments(MXG "" "TARGET;BASENAME" "SCHEMAS;NAMESPACES" ${ARGN})
  if(NOT MXG_TARGET OR NOT MXG_SCHEMAS)
    message(FATAL_ERROR "mx_generate needs TARGET and SCHEMAS")
  endif()
  if(TARGET MxXmlLib::mx)
    set(mx_tool MxXmlLib::mx)
  elseif(TARGET mx)
    set(mx_tool mx)
  else()
    message(FATAL_ERROR "mx_generate needs the mx program (MxXmlLib::mx)")
  endif()
  if(TARGET MxXmlLib::MxXmlLib)
    set(mx_library MxXmlLib::MxXmlLib)
  else()
    set(mx_library MxXmlLib)
  endif()
  list(GET MXG_SCHEMAS 0 first)
  if(NOT MXG_BASENAME)
    get_filename_component(MXG_BASENAME ${first} NAME_WE)
    string(REGEX REPLACE "[^A-Za-z0-9_]" "_" MXG_BASENAME ${MXG_BASENAME})
  endif()
  set(out ${CMAKE_CURRENT_BINARY_DIR}/${MXG_TARGET}_generated)
  set(args)
  set(depends)
  foreach(schema IN LISTS MXG_SCHEMAS)
    get_filename_component(schema ${schema} ABSOLUTE)
    list(APPEND args --schema ${schema})
    list(APPEND depends ${schema})
  endforeach()
  foreach(mapping IN LISTS MXG_NAMESPACES)
    list(APPEND args --namespace ${mapping})
  endforeach()
  add_custom_command(
    OUTPUT ${out}/${MXG_BASENAME}.h ${out}/${MXG_BASENAME}.cpp
    COMMAND ${CMAKE_COMMAND} -E make_directory ${out}
    COMMAND ${mx_tool} generate ${args} --out ${out}
    DEPENDS ${mx_tool} ${depends}
    COMMENT "Generating C++ from ${first}"
    VERBATIM)
  add_library(${MXG_TARGET} STATIC ${out}/${MXG_BASENAME}.h ${out}/${MXG_BASENAME}.cpp)
  set_target_properties(${MXG_TARGET} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_include_directories(${MXG_TARGET} PUBLIC ${out})
  target_link_libraries(${MXG_TARGET} PUBLIC ${mx_library})
endfunction()
