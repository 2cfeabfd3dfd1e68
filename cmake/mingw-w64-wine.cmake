# Cross-builds for 64-bit Windows with mingw-w64 (posix threads); what is built runs under Wine. The libraries
# come from scripts/build-windows-libraries, which leaves a link to them in build/.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)

if(DEFINED ENV{QUIREPRESS_WINDOWS_LIBRARIES})
    set(libraries $ENV{QUIREPRESS_WINDOWS_LIBRARIES})
else()
    set(libraries ${CMAKE_CURRENT_LIST_DIR}/../build/windows-libraries)
endif()
set(QUIREPRESS_WINDOWS_LIBRARIES ${libraries} CACHE PATH "What scripts/build-windows-libraries built")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUIREPRESS_WINDOWS_LIBRARIES)

set(CMAKE_FIND_ROOT_PATH ${QUIREPRESS_WINDOWS_LIBRARIES} /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Windows 10 and later; a program needs the system's own DLLs only.
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0A00 -DWINVER=0x0A00")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT}")
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
# FindZLIB would prefer the import library that lies beside the static one.
set(ZLIB_LIBRARY /usr/${triple}/lib/libz.a CACHE FILEPATH "")

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run)
