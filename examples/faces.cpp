// Finds what a cascade of boosted stages was trained for, in a picture and its smaller versions.
//
// usage: faces CASCADE PICTURE FOLDER [--hits N] [--find X,Y] [--others N]
//
// CASCADE is an XML file of stumps, PICTURE a PNG or JPEG. FOLDER receives NAME-CASCADE.png, the picture with a box
// about each find. Prints for every scale how many positions each stage left. A find is a group of at least N hits (25
// by default: a face passes at thirty and more neighbouring places and scales, what merely resembles one at fewer).
//
// With --find or --others the program fails unless some find holds the point (X, Y) near its middle, and at most N
// finds (0 by default) do not.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "support/cascade.h"
#include "support/drawing.h"

namespace {

constexpr float rate = 1.1F;             ///< from one scale to the next
constexpr Nox32f smallestDeviation = 10; ///< windows of less contrast show nothing

/// What makes a find, and what a run must find.
struct Options {
    int hits = 25;
    bool expects = false, point = false;
    int x = 0, y = 0, others = 0;
};

/// The picture at one scale: its tables, norms, and the positions that are left.
class Scale {
public:
    Scale(const Picture &gray, const Cascade &cascade)
        : gray_(gray), cascade_(cascade), positions_{gray.size.width - cascade.window.width + 1,
                                                     gray.size.height - cascade.window.height + 1} {}

    /// Builds the tables and applies stage after stage; tells how many positions each stage left.
    bool scan(std::vector<int> &left) {
        return buildTables() && (!cascade_.turned || buildTurnedTable()) && deviations() && applyStages(left);
    }

    /// The window's places that passed all stages, in this scale's pixels.
    std::vector<NoxiPoint> hits() const {
        std::vector<NoxiPoint> points;
        for (std::size_t i = 0; i < mask_.size(); ++i)
            if (mask_[i] != 0)
                points.push_back({int(i % positions_.width), int(i / positions_.width)});
        return points;
    }

private:
    int sumStep() const { return (gray_.size.width + 1) * int(sizeof(Nox32f)); }
    int squareStep() const { return (gray_.size.width + 1) * int(sizeof(Nox64f)); }
    int turnedStep() const { return (gray_.size.width + 2) * int(sizeof(Nox32f)); }
    int normStep() const { return positions_.width * int(sizeof(Nox32f)); }

    bool buildTables() {
        const std::size_t count = std::size_t(gray_.size.width + 1) * (gray_.size.height + 1);
        sums_.resize(count);
        squares_.resize(count);
        return !failed("noxiSqrIntegral_8u32f64f_C1R",
                       noxiSqrIntegral_8u32f64f_C1R(gray_.data(), gray_.step(), sums_.data(), sumStep(),
                                                    squares_.data(), squareStep(), gray_.size, 0, 0));
    }

    /// The table starts with zeros, as this member asks for.
    bool buildTurnedTable() {
        turned_.assign(std::size_t(gray_.size.width + 2) * (gray_.size.height + 2), 0);
        return !failed(
            "noxiTiltedIntegral_8u32f_C1R",
            noxiTiltedIntegral_8u32f_C1R(gray_.data(), gray_.step(), turned_.data(), turnedStep(), gray_.size, 0));
    }

    bool deviations() {
        norms_.resize(std::size_t(positions_.width) * positions_.height);
        return !failed("noxiRectStdDev_32f_C1R",
                       noxiRectStdDev_32f_C1R(sums_.data(), sumStep(), squares_.data(), squareStep(), norms_.data(),
                                              normStep(), positions_, cascade_.normRectangle));
    }

    bool applyStages(std::vector<int> &left) {
        mask_.resize(norms_.size());
        std::transform(norms_.begin(), norms_.end(), mask_.begin(),
                       [](Nox32f norm) { return norm > smallestDeviation; });
        for (const CascadeStage &stage : cascade_.stages) {
            int positive = 0;
            if (!applyStage(stage, positive))
                return false;
            left.push_back(positive);
            if (positive == 0)
                break;
        }
        return true;
    }

    bool applyStage(const CascadeStage &stage, int &positive) {
        if (std::memchr(stage.turned.data(), 1, stage.turned.size()) != nullptr)
            return !failed("noxiApplyMixedHaarClassifier_32f_C1R",
                           noxiApplyMixedHaarClassifier_32f_C1R(sums_.data(), sumStep(), turned_.data(), turnedStep(),
                                                                norms_.data(), normStep(), mask_.data(),
                                                                positions_.width, positions_, &positive,
                                                                stage.threshold, stage.state.get()));
        return !failed("noxiApplyHaarClassifier_32f_C1R",
                       noxiApplyHaarClassifier_32f_C1R(sums_.data(), sumStep(), norms_.data(), normStep(), mask_.data(),
                                                       positions_.width, positions_, &positive, stage.threshold,
                                                       stage.state.get()));
    }

    const Picture &gray_;
    const Cascade &cascade_;
    NoxiSize positions_;
    std::vector<Nox32f> sums_, turned_, norms_;
    std::vector<Nox64f> squares_;
    std::vector<Nox8u> mask_;
};

/// The next smaller scale, with little smoothing: the window's features are coarse themselves.
class Shrinker {
public:
    explicit Shrinker(NoxiSize largest) {
        const Nox16s kernel[] = {1, 6, 1};
        NoxiPyramidLayerState *state = nullptr;
        if (!failed("noxiPyramidLayerDownInitAlloc_8u_C1R",
                    noxiPyramidLayerDownInitAlloc_8u_C1R(&state, largest, rate, kernel, 3, 2)))
            state_.reset(state);
    }

    bool shrink(Picture &gray) {
        NoxiSize size{};
        if (state_ == nullptr || failed("noxiGetPyramidDownROI", noxiGetPyramidDownROI(gray.size, &size, rate)))
            return false;
        Picture smaller(size, 1);
        if (failed("noxiPyramidLayerDown_8u_C1R",
                   noxiPyramidLayerDown_8u_C1R(gray.data(), gray.step(), gray.size, smaller.data(), smaller.step(),
                                               size, state_.get())))
            return false;
        gray = std::move(smaller);
        return true;
    }

private:
    struct Release {
        void operator()(NoxiPyramidLayerState *state) const { noxiPyramidLayerDownFree_8u_C1R(state); }
    };
    std::unique_ptr<NoxiPyramidLayerState, Release> state_;
};

void printScale(NoxiSize size, double scale, const std::vector<int> &left, double milliseconds) {
    std::printf("  scale %5.2f, %4d x %4d, %6.2f ms:", scale, size.width, size.height, milliseconds);
    for (const int positions : left)
        std::printf(" %d", positions);
    std::printf("\n");
}

/// Scans the picture at all scales; hits are in the picture's pixels.
bool scanScales(Picture gray, const Cascade &cascade, std::vector<NoxiRect> &hits) {
    const NoxiSize full = gray.size;
    Shrinker shrinker(full);
    Stopwatch watch;
    double total = 0;
    while (gray.size.width >= cascade.window.width && gray.size.height >= cascade.window.height) {
        const double scale = double(full.width) / gray.size.width;
        Scale level(gray, cascade);
        std::vector<int> left;
        watch.lap();
        if (!level.scan(left))
            return false;
        const double milliseconds = watch.lap();
        total += milliseconds;
        printScale(gray.size, scale, left, milliseconds);
        for (const NoxiPoint &p : level.hits())
            hits.push_back({int(std::lround(p.x * scale)), int(std::lround(p.y * scale)),
                            int(std::lround(cascade.window.width * scale)),
                            int(std::lround(cascade.window.height * scale))});
        if (gray.size.width == 1 || !shrinker.shrink(gray))
            return gray.size.width == 1;
    }
    std::printf("  all scales %.2f ms, %zu hits\n", total, hits.size());
    return true;
}

struct Find {
    NoxiRect box;
    int hits;
};

bool alike(NoxiRect a, NoxiRect b) {
    const double slack = 0.2 * (std::min(a.width, b.width) + std::min(a.height, b.height)) / 2;
    return std::abs(a.x - b.x) <= slack && std::abs(a.y - b.y) <= slack &&
           std::abs(a.x + a.width - b.x - b.width) <= slack && std::abs(a.y + a.height - b.y - b.height) <= slack;
}

/// Groups hits that are alike, directly or through others, and takes each group's mean.
std::vector<Find> grouped(const std::vector<NoxiRect> &hits, int fewest) {
    std::vector<int> group(hits.size(), -1);
    std::vector<Find> finds;
    for (std::size_t first = 0; first < hits.size(); ++first) {
        if (group[first] >= 0)
            continue;
        std::vector<std::size_t> members = {first};
        group[first] = int(first);
        for (std::size_t next = 0; next < members.size(); ++next)
            for (std::size_t i = 0; i < hits.size(); ++i)
                if (group[i] < 0 && alike(hits[members[next]], hits[i])) {
                    group[i] = int(first);
                    members.push_back(i);
                }
        const int count = int(members.size());
        NoxiRect sum = {0, 0, 0, 0};
        for (const std::size_t i : members)
            sum = {sum.x + hits[i].x, sum.y + hits[i].y, sum.width + hits[i].width, sum.height + hits[i].height};
        if (count >= fewest)
            finds.push_back({{sum.x / count, sum.y / count, sum.width / count, sum.height / count}, count});
    }
    return finds;
}

/// The point lies in the box's middle half.
bool holds(NoxiRect box, const Options &options) {
    return std::abs(2 * (options.x - box.x) - box.width) <= box.width / 2 &&
           std::abs(2 * (options.y - box.y) - box.height) <= box.height / 2;
}

bool meets(const std::vector<Find> &finds, const Options &options) {
    const auto right = std::count_if(finds.begin(), finds.end(),
                                     [&](const Find &find) { return options.point && holds(find.box, options); });
    const auto others = std::ptrdiff_t(finds.size()) - right;
    if (!options.expects || (right == (options.point ? 1 : 0) && others <= options.others))
        return true;
    std::fprintf(stderr, "expected %d right find and at most %d others, got %ld and %ld\n", options.point ? 1 : 0,
                 options.others, long(right), long(others));
    return false;
}

bool run(const std::string &cascadePath, const std::string &path, const std::string &folder, const Options &options) {
    Cascade cascade;
    Picture color;
    if (!readCascade(cascadePath, cascade) || !readPicture(path, 3, color))
        return false;
    const std::string kind = std::filesystem::path(cascadePath).stem().string();
    std::printf("%s: %d x %d, %s: %d x %d, %zu stages of %zu classifiers%s\n", path.c_str(), color.size.width,
                color.size.height, kind.c_str(), cascade.window.width, cascade.window.height, cascade.stages.size(),
                cascade.classifiers, cascade.turned ? ", some of them turned" : "");
    std::vector<NoxiRect> hits;
    if (!scanScales(toGray(color), cascade, hits))
        return false;
    const std::vector<Find> finds = grouped(hits, options.hits);
    for (const Find &find : finds) {
        std::printf("  found at (%d, %d), %d x %d, %d hits\n", find.box.x, find.box.y, find.box.width, find.box.height,
                    find.hits);
        drawBox(color, find.box, green);
    }
    const std::string stem = (std::filesystem::path(folder) / std::filesystem::path(path).stem()).string();
    const std::string output = stem + "-" + kind + ".png";
    std::printf("  %zu found\n    %s\n", finds.size(), output.c_str());
    return writePicture(output, color) && meets(finds, options);
}

/// Reads the options behind the first three arguments; false for what is none.
bool readOptions(int argc, char **argv, Options &options) {
    for (int i = 4; i < argc; i += 2) {
        if (i + 1 == argc)
            return false;
        const std::string name = argv[i];
        const char *value = argv[i + 1];
        options.expects = options.expects || name != "--hits";
        if (name == "--find")
            options.point = true;
        const bool good = name == "--find"     ? std::sscanf(value, "%d,%d", &options.x, &options.y) == 2
                          : name == "--others" ? std::sscanf(value, "%d", &options.others) == 1
                                               : name == "--hits" && std::sscanf(value, "%d", &options.hits) == 1;
        if (!good)
            return false;
    }
    return true;
}

} // namespace

int main(int argc, char **argv) {
    Options options;
    if (argc < 4 || !readOptions(argc, argv, options)) {
        std::fprintf(stderr, "usage: faces CASCADE PICTURE FOLDER [--hits N] [--find X,Y] [--others N]\n");
        return 2;
    }
    return run(argv[1], argv[2], argv[3], options) ? 0 : 1;
}
