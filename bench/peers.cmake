# Peers of the benchmarks that bring libraries of their own. They are linked
# into the benchmark programs only, never into the library.
find_package(ZLIB REQUIRED)
find_package(OpenSSL REQUIRED)
target_link_libraries(digest_bench PRIVATE ZLIB::ZLIB OpenSSL::Crypto)
# Boost.Interprocess is header-only; its named objects live in /dev/shm.
find_package(Boost REQUIRED)
target_link_libraries(ipc_bench PRIVATE Boost::headers)
