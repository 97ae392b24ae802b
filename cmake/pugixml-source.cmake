# pugixml for the Windows builds, compiled by MinGW from Debian's source package of the
# version installed for the native build (libpugixml-dev), which
# `scripts/install-deps.sh windows` fetches and unpacks outside the checkout. The native
# and the Windows builds thus read and write qbXML with the same parser, and nothing of it
# is kept in this repository. Defines pugixml::pugixml, a static library.
execute_process(COMMAND dpkg-query -W -f=\${Version} libpugixml-dev
                OUTPUT_VARIABLE zorvat_pugixml_version ERROR_QUIET
                OUTPUT_STRIP_TRAILING_WHITESPACE)
if(DEFINED ENV{ZORVAT_CACHE_DIR})
  set(zorvat_cache_dir $ENV{ZORVAT_CACHE_DIR})
elseif(DEFINED ENV{XDG_CACHE_HOME})
  set(zorvat_cache_dir $ENV{XDG_CACHE_HOME}/zorvat)
else()
  set(zorvat_cache_dir $ENV{HOME}/.cache/zorvat)
endif()
set(ZORVAT_PUGIXML_SOURCE_DIR "" CACHE PATH
    "pugixml's unpacked source package; empty: where scripts/install-deps.sh windows puts it")
set(zorvat_pugixml_dir ${ZORVAT_PUGIXML_SOURCE_DIR})
if(NOT zorvat_pugixml_dir)
  set(zorvat_pugixml_dir ${zorvat_cache_dir}/pugixml-${zorvat_pugixml_version})
endif()
if(NOT zorvat_pugixml_version AND NOT ZORVAT_PUGIXML_SOURCE_DIR)
  message(FATAL_ERROR "libpugixml-dev is not installed: the Windows builds compile the same "
                      "version of pugixml. Run scripts/install-deps.sh windows")
endif()
if(NOT EXISTS ${zorvat_pugixml_dir}/src/pugixml.cpp)
  if(ZORVAT_PUGIXML_SOURCE_DIR)
    message(FATAL_ERROR "ZORVAT_PUGIXML_SOURCE_DIR: ${zorvat_pugixml_dir}/src/pugixml.cpp is "
                        "missing. Leave the variable empty to use the source that "
                        "scripts/install-deps.sh windows fetches.")
  endif()
  message(FATAL_ERROR "${zorvat_pugixml_dir}/src/pugixml.cpp is missing. Run "
                      "scripts/install-deps.sh windows, which fetches the source of pugixml "
                      "${zorvat_pugixml_version} into that folder.")
endif()

add_library(zorvat_pugixml STATIC ${zorvat_pugixml_dir}/src/pugixml.cpp)
target_include_directories(zorvat_pugixml SYSTEM PUBLIC ${zorvat_pugixml_dir}/src)
add_library(pugixml::pugixml ALIAS zorvat_pugixml)
