cmake_minimum_required(VERSION 3.25)
# Fails when OBJECT defines a symbol other than fma_kernel that the linker could use for other files.
execute_process(COMMAND ${NM} --defined-only --extern-only --format=posix ${OBJECT}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(STRIP "${symbols}" symbols)
string(REPLACE "\n" ";" symbols "${symbols}")
set(kernels 0)
foreach(symbol ${symbols})
  if(symbol MATCHES "^_ZN6orvane6blocks4vesk10fma_kernelE ")
    math(EXPR kernels "${kernels} + 1")
  elseif(NOT symbol MATCHES "^__odr_asan")  # the sanitizer's mark of the kernel
    message(FATAL_ERROR "${OBJECT}: ${symbol} is compiled for processors with FMA, but visible to other files")
  endif()
endforeach()
if(NOT kernels EQUAL 1)
  message(FATAL_ERROR "${OBJECT}: no fma_kernel found")
endif()
