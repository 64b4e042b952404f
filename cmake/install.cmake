# What an installation holds, and the packages made of it. Everything finds its neighbours by its own place, so that an
# installed tree may be moved.

install(TARGETS noxcore noxcva6 EXPORT noxcv
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT headers)

# find_package(noxcv): targets noxcv::noxcva6 and noxcv::noxcore. Its version file turns down the other word size.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/noxcv)
if(CMAKE_INSTALL_LIBDIR STREQUAL lib32)
  set(package_folder lib/cmake/noxcv) # Debian's CMake does not look into lib32
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/noxcvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/noxcvConfigVersion.cmake DESTINATION ${package_folder} COMPONENT development)
install(EXPORT noxcv NAMESPACE noxcv:: FILE noxcvConfig.cmake DESTINATION ${package_folder} COMPONENT development)

# pkg-config. The prefix is told by the way up from the file's own folder. Both libraries are named to the loader, so that a
# run path of the program's serves both.
file(RELATIVE_PATH way_up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/noxcv.pc @ONLY CONTENT [[
prefix=${pcfiledir}/@way_up@
libdir=${prefix}/@CMAKE_INSTALL_LIBDIR@
includedir=${prefix}/@CMAKE_INSTALL_INCLUDEDIR@

Name: noxcv
Description: Computer-vision primitives, @NOXCV_BITS@-bit
Version: @PROJECT_VERSION@
Libs: @NOXCV_WORD_FLAG@ -L${libdir} -Wl,--push-state,--no-as-needed -lnoxcva6 -lnoxcore -Wl,--pop-state
Cflags: -I${includedir} @NOXCV_WORD_FLAG@
]])
install(FILES ${PROJECT_BINARY_DIR}/noxcv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Debian packages: cpack -G DEB in the build folder. The headers are one package for both word sizes.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME noxcv)
set(CPACK_PACKAGE_VENDOR noxcv)
set(CPACK_PACKAGE_CONTACT "The noxcv maintainers <noxcv@localhost>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_COMPONENTS_ALL runtime development headers)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime headers)
set(CPACK_STRIP_FILES ON)
if(NOXCV_BITS EQUAL 32 AND CMAKE_HOST_SYSTEM_PROCESSOR STREQUAL "x86_64")
  set(package_prefix lib32)
  # The 32-bit runtimes of a 64-bit Debian.
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6-i386 (>= 2.36), lib32gomp1 (>= 12)")
else()
  set(package_prefix lib)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.36), libgomp1 (>= 12)")
endif()
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${package_prefix}noxcv5.2)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${package_prefix}noxcv-dev)
set(CPACK_DEBIAN_HEADERS_PACKAGE_NAME noxcv-headers)
set(CPACK_DEBIAN_HEADERS_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_HEADERS_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Computer-vision primitives, the ${NOXCV_BITS}-bit library")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Computer-vision primitives, to link ${NOXCV_BITS}-bit programs")
set(CPACK_COMPONENT_HEADERS_DESCRIPTION "Computer-vision primitives, headers")
include(CPack)
