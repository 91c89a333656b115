# Installs the build as a user would, component by component and whole, then
# builds a desk tool against the installed simulated phone and runs it, and
# runs the installed kelvra on the installed default phone. Run by ctest as
# the test installed_package.
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out
                  ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}: status ${status}\n${out}${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

function(expect_files prefix presence)
  foreach(file IN LISTS ARGN)
    if(presence STREQUAL "present" AND NOT EXISTS ${prefix}/${file})
      message(FATAL_ERROR "${prefix}: ${file} is missing")
    elseif(presence STREQUAL "absent" AND EXISTS ${prefix}/${file})
      message(FATAL_ERROR "${prefix}: ${file} should not be there")
    endif()
  endforeach()
endfunction()

file(REMOVE_RECURSE ${WORK})
set(install ${CMAKE_COMMAND} --install ${BUILD_DIR} --config ${CONFIG})
set(tool_files bin/kelvra bin/kelvra-inspect bin/kelvra-fleet share/tmxsim/devices/default.json
    share/tmxsim/devices/faulty.json share/tmxsim/devices/no-coprocessor.json
    share/tmxsim/devices/default.harvest.txt share/tmxsim/devices/faulty.harvest.txt)
set(development_files ${LIBDIR}/libtmxsim.a include/tmxsim/IOKit/IOKitLib.h
    include/tmxsim/tmxsim/control.h ${LIBDIR}/cmake/tmxsim/tmxsim-config.cmake)

# Each component on its own holds its files and none of the other's.
run(${install} --prefix ${WORK}/tool --component tool)
expect_files(${WORK}/tool present ${tool_files})
expect_files(${WORK}/tool absent ${development_files})
if(NOT EXISTS ${WORK}/tool/${MANDIR}/man1/kelvra.1.gz AND
   NOT EXISTS ${WORK}/tool/${MANDIR}/man1/kelvra.1)
  message(FATAL_ERROR "the manual page is missing")
endif()
run(${install} --prefix ${WORK}/development --component development)
expect_files(${WORK}/development present ${development_files})
expect_files(${WORK}/development absent ${tool_files})

set(prefix ${WORK}/prefix)
run(${install} --prefix ${prefix})
# The copyright and changelog in Debian's form go into the package only.
expect_files(${prefix} absent share/doc/kelvra/copyright share/doc/kelvra/changelog.Debian.gz)

# A desk tool of someone else's, against the installed package.
run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK}/consumer -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX}
    -DCMAKE_BUILD_TYPE=${CONFIG} "-DCMAKE_CXX_FLAGS=${FLAGS}"
    "-DCMAKE_EXE_LINKER_FLAGS=${FLAGS}")
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
run(${CMAKE_COMMAND} -E env --unset=TMXSIM_DEVICE --unset=TMXSIM_LOG ${WORK}/consumer/consumer)
file(READ ${CONSUMER}/expected.txt expected)
if(NOT out STREQUAL expected)
  message(FATAL_ERROR "the consumer wrote\n${out}\ninstead of\n${expected}")
endif()

# The installed tool on the installed default phone writes what the built one
# writes on the phone built into it.
run(${CMAKE_COMMAND} -E env --unset=TMXSIM_DEVICE --unset=TMXSIM_LOG ${KELVRA} --harvest)
set(built_in "${out}")
run(${CMAKE_COMMAND} -E env --unset=TMXSIM_LOG
    TMXSIM_DEVICE=${prefix}/share/tmxsim/devices/default.json ${prefix}/bin/kelvra --harvest)
if(NOT out STREQUAL built_in OR out STREQUAL "")
  message(FATAL_ERROR "the installed kelvra on the installed default phone differs")
endif()

# The installed kelvra-inspect gives back the capture's profile lines.
file(WRITE ${WORK}/capture.txt "${built_in}")
run(${prefix}/bin/kelvra-inspect decode ${WORK}/capture.txt)
string(REGEX MATCHALL "{  'category':[^\n]*\n" profile_lines "${built_in}")
string(JOIN "" profile_text ${profile_lines})
if(NOT out STREQUAL profile_text OR out STREQUAL "")
  message(FATAL_ERROR "the installed kelvra-inspect does not decode the capture back")
endif()
file(REMOVE_RECURSE ${WORK})
