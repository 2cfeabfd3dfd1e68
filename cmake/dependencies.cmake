# The libraries that the product links; each is named with its reason in docs/dependencies.md.

find_package(Threads REQUIRED)
find_package(fmt REQUIRED)
find_package(ZLIB REQUIRED)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)

# target from a library and a header; as quirepress_NAME_library
function(quirepress_find_library name header)
    find_library(${name}_LIBRARY NAMES ${ARGN} REQUIRED)
    find_path(${name}_INCLUDE ${header} REQUIRED)
    add_library(quirepress_${name}_library INTERFACE)
    target_include_directories(quirepress_${name}_library SYSTEM INTERFACE ${${name}_INCLUDE})
    target_link_libraries(quirepress_${name}_library INTERFACE ${${name}_LIBRARY})
endfunction()

quirepress_find_library(qpdf qpdf/QPDF.hh qpdf)
target_compile_definitions(quirepress_qpdf_library INTERFACE POINTERHOLDER_TRANSITION=4)
quirepress_find_library(archive archive.h archive)
quirepress_find_library(deflate libdeflate.h deflate)
quirepress_find_library(curl curl/curl.h curl)
quirepress_find_library(expat expat.h expat)

# CUPS is there for the systems that print with it; a program that is built without libcups says so.
if(NOT WIN32)
    find_library(cups_LIBRARY NAMES cups)
    find_path(cups_INCLUDE cups/cups.h)
    if(cups_LIBRARY AND cups_INCLUDE)
        quirepress_find_library(cups cups/cups.h cups)
    else()
        message(STATUS "libcups was not found: built without CUPS")
    endif()
endif()

# So is the desktop, through whose accessibility the windows of other programs are seen.
if(NOT WIN32)
    find_package(PkgConfig)
    if(PkgConfig_FOUND)
        pkg_check_modules(gio IMPORTED_TARGET gio-2.0 x11)
    endif()
    if(gio_FOUND)
        add_library(quirepress_gio_library INTERFACE)
        target_link_libraries(quirepress_gio_library INTERFACE PkgConfig::gio)
    else()
        message(STATUS "GIO or libX11 was not found: built without the windows of other programs")
    endif()
endif()

if(WIN32)
    # Static libraries do not say what they need themselves.
    foreach(library jpeg lzma bz2 zstd)
        find_library(${library}_LIBRARY NAMES ${library} REQUIRED)
    endforeach()
    target_compile_definitions(quirepress_curl_library INTERFACE CURL_STATICLIB)
    target_compile_definitions(quirepress_expat_library INTERFACE XML_STATIC)
    target_link_libraries(quirepress_curl_library INTERFACE ws2_32 crypt32 bcrypt normaliz)
    target_link_libraries(quirepress_qpdf_library INTERFACE ${jpeg_LIBRARY} ZLIB::ZLIB)
    target_compile_definitions(quirepress_archive_library INTERFACE LIBARCHIVE_STATIC)
    target_link_libraries(quirepress_archive_library INTERFACE ${lzma_LIBRARY} ${bz2_LIBRARY} ${zstd_LIBRARY} ZLIB::ZLIB bcrypt)
endif()

# libqpdf's headers cannot be read as C++20 by clang 14 with the standard library of GCC 12 (nor by its
# clang-tidy): the sources that include them, and what they include, are C++17.
function(quirepress_mark_qpdf_sources)
    foreach(source ${ARGN})
        file(STRINGS ${source} includes REGEX "^#include <qpdf/")
        if(includes)
            set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS -std=c++17)
        endif()
    endforeach()
endfunction()
