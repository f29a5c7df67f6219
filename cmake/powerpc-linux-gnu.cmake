# Cross build for the target: 32-bit big-endian PowerPC, Debian's
# g++-powerpc-linux-gnu, test programs run under qemu-ppc.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR powerpc)

set(CMAKE_C_COMPILER powerpc-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER powerpc-linux-gnu-g++)

set(ZKSUPT_PPC_SYSROOT /usr/powerpc-linux-gnu)
set(CMAKE_FIND_ROOT_PATH ${ZKSUPT_PPC_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-ppc -L ${ZKSUPT_PPC_SYSROOT})
set(CMAKE_NM powerpc-linux-gnu-nm)

set(ZKSUPT_TARGET_BIG_ENDIAN 1)
set(ZKSUPT_TARGET_POINTER_SIZE 4)
