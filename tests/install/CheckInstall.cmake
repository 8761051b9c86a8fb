# Installs the build in BUILD_DIR into a scratch prefix, then builds against it as outside users do:
# the consumer project in CONSUMER_DIR through find_package(TavrinDatabase 0.2 CONFIG), at its
# compiler's default language standard and with headers of its own that share names with ours, and
# the quickstart example with the flags of `pkg-config --cflags --libs tavrin` alone.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
# The tool is installed beside the library and runs from there.
run(${prefix}/bin/tavrin --help)
set(flags "")
if(SANITIZE)
  set(flags "-fsanitize=address,undefined")
endif()
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/build
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    "-DCMAKE_CXX_FLAGS=${flags}" "-DCMAKE_EXE_LINKER_FLAGS=${flags}")
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer ${WORK_DIR})

file(GLOB_RECURSE pc_files ${prefix}/*/tavrin.pc)
list(GET pc_files 0 pc_file)
get_filename_component(pc_dir ${pc_file} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
execute_process(COMMAND pkg-config --cflags --libs tavrin OUTPUT_VARIABLE pc_flags RESULT_VARIABLE result
                OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know tavrin")
endif()
separate_arguments(pc_flags UNIX_COMMAND "${pc_flags}")
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX_COMPILER} ${flags} ${QUICKSTART} -o ${WORK_DIR}/quickstart ${pc_flags})
run(${CMAKE_COMMAND} -E chdir ${WORK_DIR} ${WORK_DIR}/quickstart)
message(STATUS "installed tool runs; installed package builds and runs through find_package and through pkg-config")
