# Defines the target automation_headers: the client interfaces of UI Automation in <uiautomationclient.h>.
#
# mingw's own header lacks the client interfaces up to version 10. Wine's headers have them, but share a folder with all
# its other Windows headers, so the two that are needed are copied.

include(CheckCXXSourceCompiles)

add_library(automation_headers INTERFACE)

check_cxx_source_compiles("
    #include <uiautomationclient.h>
    int main() { return __uuidof(CUIAutomation).Data1 == 0 || sizeof(IUIAutomationCacheRequest) == 0; }"
    ROTIKA_COMPILER_HAS_AUTOMATION)

if(NOT ROTIKA_COMPILER_HAS_AUTOMATION)
    find_path(ROTIKA_WINE_HEADERS uiautomationcore.h
        PATHS /usr/include/wine /usr/include/wine-development /usr/include /usr/local/include /opt/wine-stable/include
        PATH_SUFFIXES wine/windows windows
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
        DOC "Folder of Wine's Windows headers")
    if(NOT ROTIKA_WINE_HEADERS)
        message(FATAL_ERROR "No headers of UI Automation's client: install libwine-dev")
    endif()
    set(folder ${CMAKE_BINARY_DIR}/automation_headers)
    foreach(header uiautomationcore.h uiautomationclient.h)
        configure_file(${ROTIKA_WINE_HEADERS}/${header} ${folder}/${header} COPYONLY)
    endforeach()
    # Searched before the compiler's own incomplete headers of the same names.
    target_include_directories(automation_headers SYSTEM INTERFACE ${folder})
endif()
