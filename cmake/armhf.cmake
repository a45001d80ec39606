# Builds for 32-bit Arm (ARMv7 with a unit for floating point) on a Debian of another architecture.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(DEBIAN_ARCHITECTURE armhf)
set(emulator qemu-arm-static)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
