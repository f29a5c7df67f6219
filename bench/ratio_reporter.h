// The console output of Google Benchmark, followed by the ratio of our CPU
// time to the peer's for every pair of benchmarks named "<what>_<ours>..."
// and "<what>_<peer>..." (the rest of the names equal). A program may have
// several peers; each pair is reported as ours over that peer.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace zksupt::bench {

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    RatioReporter(std::string ours, const std::vector<std::string> &peers, std::string title)
        : ours_(std::string("_").append(ours)), title_(std::move(title))
    {
        // append rather than "_" + name: GCC 12 at -O3 warns about the
        // operator+ form (a false -Wrestrict), which would fail a Release build.
        for (const std::string &peer : peers)
            peers_.push_back(std::string("_").append(peer));
    }
    RatioReporter(std::string ours, std::string peer, std::string title)
        : RatioReporter(std::move(ours), std::vector<std::string>{std::move(peer)}, std::move(title))
    {
    }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs)
            if (!run.error_occurred && run.run_type == Run::RT_Iteration)
                times_[run.benchmark_name()] = run.GetAdjustedCPUTime();
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\n%s\n", title_.c_str());
        for (const auto &[name, time] : times_) {
            const std::size_t at = name.find(ours_);
            if (at == std::string::npos)
                continue;
            for (const std::string &suffix : peers_) {
                const std::string peerName = name.substr(0, at) + suffix + name.substr(at + ours_.size());
                const auto peer = times_.find(peerName);
                if (peer == times_.end())
                    continue;
                if (peers_.size() == 1)
                    std::printf("  %-34s %.3f\n", name.c_str(), time / peer->second);
                else
                    std::printf("  %-34s / %-28s %.3f\n", name.c_str(), peerName.c_str(), time / peer->second);
            }
        }
    }

  private:
    std::string ours_, title_;
    std::vector<std::string> peers_;
    std::map<std::string, double> times_;
};

// A benchmark program's main, reporting through a RatioReporter.
inline int runWithRatios(int argc, char **argv, const char *ours, const std::vector<std::string> &peers,
                         const char *title)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter(ours, peers, title);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

inline int runWithRatios(int argc, char **argv, const char *ours, const char *peer, const char *title)
{
    return runWithRatios(argc, argv, ours, std::vector<std::string>{peer}, title);
}

}  // namespace zksupt::bench
