# Peers of the benchmarks that bring libraries of their own. They are linked
# into the benchmark programs only, never into the library.
find_package(ZLIB REQUIRED)
find_package(OpenSSL REQUIRED)
target_link_libraries(digest_bench PRIVATE ZLIB::ZLIB OpenSSL::Crypto)
# Boost.Interprocess is header-only; its named objects live in /dev/shm.
find_package(Boost REQUIRED)
target_link_libraries(ipc_bench PRIVATE Boost::headers)
# Intel's ISA-L (Debian's libisal-dev): crc32_gzip_refl, the fastest CRC-32 at
# hand, as the CRC's second peer.
find_path(ISAL_INCLUDE_DIR isa-l/crc.h REQUIRED)
find_library(ISAL_LIBRARY isal REQUIRED)
target_include_directories(digest_bench PRIVATE ${ISAL_INCLUDE_DIR})
target_link_libraries(digest_bench PRIVATE ${ISAL_LIBRARY})
