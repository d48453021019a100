# Makes one form of the extension from its single source:
#   cmake -DSOURCE=extension.js -DMETADATA=metadata.json.in -DFORM=43|45 -DVERSION=N -DOUT=dir -P MakeForm.cmake
# Lines marked //@43 belong to the imports.* form (GNOME 43 and 44), lines marked
# //@45 to the ES-module form (GNOME 45 and later).
if(FORM STREQUAL "43")
    set(keep "43")
    set(drop "45")
    set(SHELL_VERSIONS "\"43\", \"44\"")
else()
    set(keep "45")
    set(drop "43")
    set(SHELL_VERSIONS "\"45\", \"46\", \"47\", \"48\", \"49\"")
endif()
file(READ "${SOURCE}" text)
string(REGEX REPLACE "(^|\n)//@${drop}[^\n]*" "" text "${text}")
string(REGEX REPLACE "(^|\n)//@${keep} ?" "\\1" text "${text}")
file(WRITE "${OUT}/extension.js" "${text}")
set(EXTENSION_VERSION "${VERSION}")
configure_file("${METADATA}" "${OUT}/metadata.json" @ONLY)
