# As for our own Windows build; what has been built before is found as well.
include("${CMAKE_CURRENT_LIST_DIR}/../../cmake/mingw.cmake")
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0601 -Wa,-muse-unaligned-vector-move")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CMAKE_STAGING_PREFIX)
list(APPEND CMAKE_FIND_ROOT_PATH "${CMAKE_STAGING_PREFIX}")
