# The one-way dependencies between the source folders, and the check that holds the code to them.
#
# Run as a script: cmake -DROOT=<source tree> -P folder_rules.cmake
# It reads every .h/.hpp/.cpp under the folders of the table below and fails, naming the file,
# the line and the rule, when a source includes a folder its row does not allow. A folder may
# always include its own files; `qv5/...` are the public headers.
#
# Each row: folder | folders it may include | public headers it may include ("all", or a list).
# Folders not in the table (fuzz/, bench/, tests/) are unrestricted.
set(QV5_FOLDER_RULES
    # core: what every subsystem shares; the standard library and GEO_NULL only.
    "core|-|qv5/geodef.h"
    # platform: the only code that talks to the operating system or to Cairo.
    "platform|core|all"
    "geometry|core,platform|all"
    # geodesy: points reach the calibration through geometry (CGeoPoint converts through an
    # attached CGeoTransformation), so geodesy sits beside geometry and may use it, never the
    # other way round except through the public headers.
    "geodesy|core,geometry|all"
    "units|core,platform|all"
    # section: cross-section templates, template geometry, section profiles, template drawing.
    "section|core,geometry,platform|all"
    # road: the road, its profile, template library and applications, road file, nearest-point
    # search and the road iterator (the road and the iterator call each other, so both live
    # here, above section).
    "road|core,geometry,section,platform|all"
    # exchange and the command-line program use only the public headers and their own files.
    "exchange|-|all"
    "tools|-|all"
    # The public headers include only the standard library and each other.
    "include|-|all")

# Every folder a source may name in an include; an include whose first component is none of
# these (a system or third-party header) is not the table's business.
set(QV5_SOURCE_FOLDERS core platform geometry geodesy units section road exchange tools)

cmake_minimum_required(VERSION 3.25)

if(NOT DEFINED ROOT)
    message(FATAL_ERROR "folder_rules.cmake: pass -DROOT=<source tree>")
endif()

set(violations 0)
set(checked 0)
foreach(row IN LISTS QV5_FOLDER_RULES)
    string(REPLACE "|" ";" fields "${row}")
    list(GET fields 0 folder)
    list(GET fields 1 allowed)
    list(GET fields 2 public)
    string(REPLACE "," ";" allowed "${allowed}")
    string(REPLACE "," ";" public "${public}")
    if(NOT IS_DIRECTORY "${ROOT}/${folder}")
        continue() # a folder still to come
    endif()
    file(GLOB_RECURSE sources "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.hpp"
         "${ROOT}/${folder}/*.cpp")
    foreach(source IN LISTS sources)
        math(EXPR checked "${checked} + 1")
        file(RELATIVE_PATH shown "${ROOT}" "${source}")
        file(STRINGS "${source}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
        foreach(line IN LISTS includes)
            string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*[<\"]([^>\"]*)[>\"].*$" "\\1" path
                                 "${line}")
            set(problem "")
            if(path MATCHES "(^|/)\\.\\.(/|$)")
                set(problem "climbs out of its folder with ..")
            elseif(path MATCHES "^qv5/")
                if(NOT public STREQUAL "all" AND NOT path IN_LIST public)
                    set(problem "may include only ${public} of the public headers")
                endif()
            elseif(path MATCHES "^([A-Za-z0-9_]+)/")
                set(top "${CMAKE_MATCH_1}")
                if(top IN_LIST QV5_SOURCE_FOLDERS AND NOT top STREQUAL folder
                   AND NOT top IN_LIST allowed)
                    set(problem "${folder}/ may not include ${top}/")
                endif()
            endif()
            if(problem)
                message(SEND_ERROR "${shown}: #include \"${path}\": ${problem}")
                math(EXPR violations "${violations} + 1")
            endif()
        endforeach()
    endforeach()
endforeach()

if(violations GREATER 0)
    message(FATAL_ERROR "${violations} include(s) break the folder rules")
endif()
message(STATUS "${checked} sources follow the folder rules")
