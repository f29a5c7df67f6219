// The named objects uncontended, in one process, beside Boost.Interprocess
// and the bare system calls:
//   NamedMutex     lock + unlock: SMMutex* on a named mutex, Boost's
//                  named_mutex, and the raw fcntl F_SETLK lock/unlock pair
//                  that a named mutex's record lock costs at least
//   NamedSemaphore release + acquire: SMSemaphore* (a System V set) and
//                  Boost's named_semaphore (a POSIX named semaphore)
//   WriteLock      write lock + release: SMRWL* on a named lock and Boost's
//                  file_lock
//   Event          set + wait of an automatic-reset event: SMEvent* (a
//                  System V set) and Boost's named_semaphore post + wait
//   Segment        create + attach + free of a 4 KiB segment: SMSharedMem*
//                  (segment and guard set) and Boost's shared_memory_object
//                  with a mapped_region
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>
#include <boost/interprocess/sync/file_lock.hpp>
#include <boost/interprocess/sync/named_mutex.hpp>
#include <boost/interprocess/sync/named_semaphore.hpp>

#include <fstream>
#include <string>

#include <zksupt/ipc.h>

#include "bench_sandbox.h"
#include "ratio_reporter.h"

namespace {

namespace bip = boost::interprocess;

// Names of this run's Boost objects, which live outside the installation.
std::string peerName(const char *what)
{
    return "zksupt-bench-" + std::string(what) + "-" + std::to_string(getpid());
}

void NamedMutex_Library(benchmark::State &state)
{
    zksupt::bench::installation();
    void *mutex = SMMutexCreate("bench mutex");
    for (auto _ : state) {
        SMMutexLock(mutex, -1);
        SMMutexUnLock(mutex);
    }
    SMMutexDestroy(mutex);
}

void NamedMutex_Boost(benchmark::State &state)
{
    const std::string name = peerName("mutex");
    bip::named_mutex::remove(name.c_str());
    {
        bip::named_mutex mutex(bip::create_only, name.c_str());
        for (auto _ : state) {
            mutex.lock();
            mutex.unlock();
        }
    }
    bip::named_mutex::remove(name.c_str());
}

void NamedMutex_Fcntl(benchmark::State &state)
{
    const std::string path = zksupt::bench::installation().root() + "/raw.lock";
    const int fd = ::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    struct flock lock {};
    lock.l_whence = SEEK_SET;
    for (auto _ : state) {
        lock.l_type = F_WRLCK;
        ::fcntl(fd, F_SETLK, &lock);
        lock.l_type = F_UNLCK;
        ::fcntl(fd, F_SETLK, &lock);
    }
    ::close(fd);
}

void NamedSemaphore_Library(benchmark::State &state)
{
    zksupt::bench::installation();
    void *semaphore = SMSemaphoreCreate("bench semaphore", 0);
    for (auto _ : state) {
        SMSemaphoreRelease(semaphore, 1, nullptr);
        SMSemaphoreAcquireWait(semaphore, -1);
    }
    SMSemaphoreDestroy(semaphore);
}

void NamedSemaphore_Boost(benchmark::State &state)
{
    const std::string name = peerName("semaphore");
    bip::named_semaphore::remove(name.c_str());
    {
        bip::named_semaphore semaphore(bip::create_only, name.c_str(), 0);
        for (auto _ : state) {
            semaphore.post();
            semaphore.wait();
        }
    }
    bip::named_semaphore::remove(name.c_str());
}

void WriteLock_Library(benchmark::State &state)
{
    zksupt::bench::installation();
    void *lock = SMRWLCreate("bench rw lock");
    for (auto _ : state) {
        SMRWLWriteLockGet(lock, -1);
        SMRWLWriteLockRelease(lock);
    }
    SMRWLDestroy(lock);
}

void WriteLock_Boost(benchmark::State &state)
{
    const std::string path = zksupt::bench::installation().root() + "/boost.lock";
    std::ofstream{path};
    bip::file_lock lock(path.c_str());
    for (auto _ : state) {
        lock.lock();
        lock.unlock();
    }
}

void Event_Library(benchmark::State &state)
{
    zksupt::bench::installation();
    void *event = SMEventCreate("bench event", 0, 0);
    for (auto _ : state) {
        SMEventSet(event);
        SMEventWait(event, -1);
    }
    SMEventDestroy(event);
}

void Event_Boost(benchmark::State &state)
{
    const std::string name = peerName("event");
    bip::named_semaphore::remove(name.c_str());
    {
        bip::named_semaphore event(bip::create_only, name.c_str(), 0);
        for (auto _ : state) {
            event.post();
            event.wait();
        }
    }
    bip::named_semaphore::remove(name.c_str());
}

constexpr uint32_t kSegmentBytes = 4096;

void Segment_Library(benchmark::State &state)
{
    zksupt::bench::installation();
    for (auto _ : state) {
        void *segment = SMSharedMemCreate("bench segment", kSegmentBytes);
        benchmark::DoNotOptimize(SMSharedMemGetAddressPtr(segment));
        SMSharedMemFree(segment);
    }
}

void Segment_Boost(benchmark::State &state)
{
    const std::string name = peerName("segment");
    for (auto _ : state) {
        {
            bip::shared_memory_object segment(bip::create_only, name.c_str(), bip::read_write);
            segment.truncate(kSegmentBytes);
            bip::mapped_region region(segment, bip::read_write);
            benchmark::DoNotOptimize(region.get_address());
        }
        bip::shared_memory_object::remove(name.c_str());
    }
}

}  // namespace

BENCHMARK(NamedMutex_Library);
BENCHMARK(NamedMutex_Boost);
BENCHMARK(NamedMutex_Fcntl);
BENCHMARK(NamedSemaphore_Library);
BENCHMARK(NamedSemaphore_Boost);
BENCHMARK(WriteLock_Library);
BENCHMARK(WriteLock_Boost);
BENCHMARK(Event_Library);
BENCHMARK(Event_Boost);
BENCHMARK(Segment_Library);
BENCHMARK(Segment_Boost);

int main(int argc, char **argv)
{
    return zksupt::bench::runWithRatios(argc, argv, "Library", {"Boost", "Fcntl"},
                                        "CPU time of the library / Boost.Interprocess and the raw fcntl pair:");
}
