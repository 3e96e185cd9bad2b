# The former name of arm-linux.cmake: build folders configured with it keep working.
include(${CMAKE_CURRENT_LIST_DIR}/arm-linux.cmake)
