# The least that a host's own platform package must say: here with our library in the role of the host's. SYSTEM is ours:
# its headers are those of this project, and so the compiler is called as it is elsewhere.
if(NOT TARGET qrv::platform)
    add_library(qrv::platform SHARED IMPORTED)
    set_target_properties(qrv::platform PROPERTIES
        IMPORTED_LOCATION ${QRV_HOST_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${QRV_HOST_HEADERS}
        INTERFACE_LINK_LIBRARIES Qt5::Core
        SYSTEM OFF)
endif()
