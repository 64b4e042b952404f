// Runs the registered members and prints one table: time per pixel, and ratios taken in the same run.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <regex>

#include "bench.h"
#include "noxcore.h"

namespace bench {

namespace {

double seconds() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

/// Time of one call, from `repeat` calls in a row.
double timeOf(const std::function<void()> &call, int repeat) {
    const double start = seconds();
    for (int i = 0; i < repeat; ++i)
        call();
    return (seconds() - start) / repeat;
}

/// Calls in a row so that a measurement lasts about two milliseconds.
int repeatFor(const std::function<void()> &call) {
    call();
    const double once = std::max(timeOf(call, 1), 1e-9);
    return std::clamp(static_cast<int>(0.002 / once), 1, 100000);
}

struct Options {
    std::regex filter{""};
    std::string json;
    std::vector<NoxiSize> sizes = {{64, 64}, {640, 480}, {1920, 1080}, {4096, 4096}};
    std::vector<int> threads = {1, 2};
    double budget = 0.3; ///< seconds for one line of the table
    bool plain = true;   ///< whether the plain loops are measured, too
};

struct Line {
    std::string name;
    NoxiSize size;
    int threads;
    double nanoseconds; ///< per pixel
    double perMemcpy;   ///< time over memcpy of the bytes read and written
    double perByte;     ///< time per pixel over memcpy's time per byte
    double perPlain;    ///< plain loop over time; 0 when there is none
    double perSingle;   ///< one thread over this; 0 when this is one thread
};

/// Measures alternately the call, memcpy and the plain loop, and keeps the best of each.
Line measure(const Member &member, NoxiSize size, int threads, const Options &options) {
    const Work work = member.make(size);
    const double pixels = double(size.width) * size.height;
    const auto bytes = std::max<std::size_t>(1, std::size_t((member.read + member.written) / 2 * pixels));
    std::vector<unsigned char> from(bytes, 1), to(bytes, 2);
    const std::function<void()> copy = [&] {
        std::memcpy(to.data(), from.data(), bytes);
        __asm__ volatile("" : : "r"(to.data()) : "memory");
    };
    const std::function<void()> single = [&] {
        noxSetNumThreads(1);
        work.run();
        noxSetNumThreads(threads);
    };
    noxSetNumThreads(threads);
    const bool plain = options.plain && bool(work.reference) && threads == 1, compare = threads > 1;
    const int repeatRun = repeatFor(work.run), repeatCopy = repeatFor(copy),
              repeatPlain = plain ? repeatFor(work.reference) : 0;
    double run = 1e9, memcpyTime = 1e9, reference = 1e9, one = 1e9;
    const double end = seconds() + options.budget;
    for (int round = 0; round < 3 || (seconds() < end && round < 200); ++round) {
        if (threads > 1)
            work.run(); // wakes the threads that have gone to sleep since the last round
        run = std::min(run, timeOf(work.run, repeatRun));
        memcpyTime = std::min(memcpyTime, timeOf(copy, repeatCopy));
        if (plain && (round == 0 || repeatPlain > 1))
            reference = std::min(reference, timeOf(work.reference, repeatPlain));
        if (compare)
            one = std::min(one, timeOf(single, repeatRun));
    }
    noxSetNumThreads(1);
    return {member.name,
            size,
            threads,
            run / pixels * 1e9,
            run / memcpyTime,
            run / pixels / (memcpyTime / double(bytes)),
            plain ? reference / run : 0.0,
            compare ? one / run : 0.0};
}

void print(const Line &line) {
    std::printf("%-52s %5dx%-5d %2d %9.4f %9.2f %9.2f ", line.name.c_str(), line.size.width, line.size.height,
                line.threads, line.nanoseconds, line.perMemcpy, line.perByte);
    if (line.perPlain > 0)
        std::printf("%9.1f", line.perPlain);
    if (line.perSingle > 0)
        std::printf("%9s %9.2f", "", line.perSingle);
    std::printf("\n");
    std::fflush(stdout);
}

void writeJson(const std::string &path, const std::vector<Line> &lines) {
    std::ofstream out(path);
    out << "[\n";
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const Line &line = lines[i];
        out << "  {\"name\": \"" << line.name << "\", \"width\": " << line.size.width
            << ", \"height\": " << line.size.height << ", \"threads\": " << line.threads
            << ", \"ns_per_pixel\": " << line.nanoseconds << ", \"over_memcpy\": " << line.perMemcpy
            << ", \"over_memcpy_byte\": " << line.perByte << ", \"plain_over\": " << line.perPlain
            << ", \"one_thread_over\": " << line.perSingle << "}" << (i + 1 < lines.size() ? "," : "") << "\n";
    }
    out << "]\n";
}

std::string processorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);)
        if (line.rfind("model name", 0) == 0)
            return line.substr(line.find(':') + 2);
    return "unknown processor";
}

int usage() {
    std::fprintf(
        stderr,
        "usage: noxcv_bench [--filter REGEX] [--size WxH] [--threads N] [--seconds S] [--plain no] [--json FILE]\n"
        "  --filter   members whose name matches\n"
        "  --size     this size only (default: four standard sizes)\n"
        "  --threads  this thread count only (default: 1, and 2 for members with a parallel form)\n"
        "  --seconds  time for each line of the table (default 0.3)\n"
        "  --plain    no: without the plain loops, which take most of the time (default yes)\n"
        "  --json     write the lines to a file too\n");
    return 2;
}

bool parse(int argc, char **argv, Options &options) {
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (i + 1 >= argc)
            return false;
        const std::string value = argv[++i];
        NoxiSize size{};
        if (option == "--filter")
            options.filter = std::regex(value);
        else if (option == "--size" && std::sscanf(value.c_str(), "%dx%d", &size.width, &size.height) == 2)
            options.sizes = {size};
        else if (option == "--threads")
            options.threads = {std::max(1, std::atoi(value.c_str()))};
        else if (option == "--seconds")
            options.budget = std::atof(value.c_str());
        else if (option == "--plain")
            options.plain = value != "no";
        else if (option == "--json")
            options.json = value;
        else
            return false;
    }
    return true;
}

} // namespace

std::shared_ptr<void> imageMemory(std::size_t bytes) {
    return {std::aligned_alloc(64, (bytes + 127) / 64 * 64), std::free};
}

void keepBytes(const void *bytes, std::size_t) { __asm__ volatile("" : : "r"(bytes) : "memory"); }

template <class T>
Image<T> picture(NoxiSize size, int channels, unsigned seed) {
    Image<T> image(size, channels);
    unsigned noise = seed * 2654435761U + 1U;
    const double low = std::is_signed_v<T> && !std::is_floating_point_v<T> ? -0.5 : 0.0;
    const double scale = sizeof(T) == 1 || std::is_floating_point_v<T> ? 255.0 : sizeof(T) == 2 ? 65535.0 : 1e6;
    std::vector<double> column(std::size_t(size.width) * channels);
    for (std::size_t i = 0; i < column.size(); ++i) {
        const std::size_t x = i / channels, channel = i % channels;
        column[i] = std::sin(double(x) * 0.021 + double(channel) + seed);
    }
    for (int y = 0; y < size.height; ++y) {
        T *row = image.data() + std::size_t(y) * column.size();
        const double vertical = std::cos(y * 0.017 + seed);
        for (std::size_t i = 0; i < column.size(); ++i) {
            noise = noise * 1664525U + 1013904223U;
            const double texture = double(noise >> 16) / 65536.0;
            row[i] = static_cast<T>((low + 0.5 + 0.22 * column[i] + 0.22 * vertical + 0.05 * (texture - 0.5)) * scale);
        }
    }
    return image;
}
BENCH_PICTURES(BENCH_DEFINED)

int runAll(int argc, char **argv) {
    Options options;
    if (!parse(argc, argv, options))
        return usage();
    std::printf("%s, %d-bit\n", processorName().c_str(), int(sizeof(void *)) * 8);
    std::printf("%-52s %11s %2s %9s %9s %9s %9s %9s\n", "member", "size", "th", "ns/pixel", "x memcpy", "x mc/byte",
                "plain x", "1 th x");
    std::vector<Line> lines;
    for (const Member &member : members()) {
        if (!std::regex_search(member.name, options.filter))
            continue;
        for (const NoxiSize size : member.sizes.empty() ? options.sizes : member.sizes)
            for (const int threads : options.threads) {
                if (threads > 1 && !member.parallel)
                    continue;
                lines.push_back(measure(member, size, threads, options));
                print(lines.back());
            }
    }
    if (!options.json.empty())
        writeJson(options.json, lines);
    return 0;
}

} // namespace bench

int main(int argc, char **argv) { return bench::runAll(argc, argv); }
