#include "cascade.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include <rapidxml/rapidxml.hpp>

namespace {

using Node = rapidxml::xml_node<>;

/// The numbers in an element's text; none where the element is missing.
std::vector<double> numbers(const Node *node) {
    std::vector<double> values;
    if (node == nullptr)
        return values;
    const char *text = node->value();
    char *end = nullptr;
    for (double value = std::strtod(text, &end); end != text; value = std::strtod(text, &end)) {
        values.push_back(value);
        text = end;
    }
    return values;
}

const Node *child(const Node *node, const char *name) { return node == nullptr ? nullptr : node->first_node(name); }

double number(const Node *node, const char *name) {
    const std::vector<double> values = numbers(child(node, name));
    return values.empty() ? 0 : values[0];
}

/// The elements of a list are all called _.
std::vector<const Node *> listed(const Node *list) {
    std::vector<const Node *> nodes;
    for (const Node *node = child(list, "_"); node != nullptr; node = node->next_sibling("_"))
        nodes.push_back(node);
    return nodes;
}

/// Weighted rectangles, and whether they are turned.
struct Feature {
    std::vector<NoxiRect> rectangles;
    std::vector<Nox32f> weights;
    bool turned = false;
};

/// The corner points of the file's turned rectangles count pixels; those of the library's tables lie between them, and
/// its stages look one column further right. One column less is what comes nearest (half a pixel remains).
NoxiRect asTurned(NoxiRect r) { return {r.x - 1, r.y, r.width, r.height}; }

bool readFeature(const Node *node, Feature &feature) {
    feature.turned = number(node, "tilted") != 0;
    for (const Node *entry : listed(child(node, "rects"))) {
        const std::vector<double> v = numbers(entry);
        if (v.size() != 5)
            return false;
        const NoxiRect r = {int(v[0]), int(v[1]), int(v[2]), int(v[3])};
        feature.rectangles.push_back(feature.turned ? asTurned(r) : r);
        feature.weights.push_back(Nox32f(v[4]));
    }
    return !feature.rectangles.empty();
}

/// A stump: "0 -1 FEATURE THRESHOLD" and the values below and from the threshold on. The file's thresholds are for
/// feature sums over the area of the norm rectangle, the library's for the sums themselves.
bool readStump(const Node *node, const std::vector<Feature> &features, double area, CascadeStage &stage) {
    const std::vector<double> split = numbers(child(node, "internalNodes")),
                              leaves = numbers(child(node, "leafValues"));
    if (split.size() != 4 || leaves.size() != 2 || !(split[2] >= 0 && split[2] < double(features.size())))
        return false;
    const Feature &feature = features[std::size_t(split[2])];
    stage.rectangles.insert(stage.rectangles.end(), feature.rectangles.begin(), feature.rectangles.end());
    stage.weights.insert(stage.weights.end(), feature.weights.begin(), feature.weights.end());
    stage.counts.push_back(int(feature.rectangles.size()));
    stage.turned.push_back(feature.turned);
    stage.thresholds.push_back(Nox32f(split[3] * area));
    stage.lowValues.push_back(Nox32f(leaves[0]));
    stage.highValues.push_back(Nox32f(leaves[1]));
    return true;
}

bool makeStage(CascadeStage &stage) {
    NoxiHaarClassifier_32f *state = nullptr;
    const NoxStatus made = noxiHaarClassifierInitAlloc_32f(
        &state, stage.rectangles.data(), stage.weights.data(), stage.thresholds.data(), stage.lowValues.data(),
        stage.highValues.data(), stage.counts.data(), int(stage.counts.size()));
    if (made != noxStsNoError)
        return false;
    stage.state.reset(state);
    return noxiTiltHaarFeatures_32f(stage.turned.data(), 1, state) == noxStsNoError;
}

const char *fill(const Node *root, Cascade &cascade) {
    cascade.window = {int(number(root, "width")), int(number(root, "height"))};
    if (cascade.window.width < 3 || cascade.window.height < 3)
        return "no cascade with a window size";
    cascade.normRectangle = {1, 1, cascade.window.width - 2, cascade.window.height - 2};
    const double area = double(cascade.normRectangle.width) * cascade.normRectangle.height;
    std::vector<Feature> features;
    for (const Node *node : listed(child(root, "features")))
        if (!readFeature(node, features.emplace_back()))
            return "a feature is not made of rectangles";
    for (const Node *node : listed(child(root, "stages"))) {
        CascadeStage &stage = cascade.stages.emplace_back();
        stage.threshold = Nox32f(number(node, "stageThreshold"));
        for (const Node *classifier : listed(child(node, "weakClassifiers")))
            if (!readStump(classifier, features, area, stage))
                return "a classifier is no stump of one feature";
        if (!makeStage(stage))
            return "a stage cannot be made";
        cascade.classifiers += stage.counts.size();
        cascade.turned = cascade.turned || std::memchr(stage.turned.data(), 1, stage.turned.size()) != nullptr;
    }
    return cascade.stages.empty() ? "no stages" : nullptr;
}

} // namespace

bool readCascade(const std::string &path, Cascade &cascade) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    text.push_back('\0');
    const char *failure = nullptr;
    try {
        rapidxml::xml_document<> document;
        document.parse<0>(text.data());
        failure = fill(child(document.first_node("opencv_storage"), "cascade"), cascade);
    } catch (const rapidxml::parse_error &) {
        failure = "not readable as XML";
    }
    if (failure != nullptr)
        std::fprintf(stderr, "%s: %s\n", path.c_str(), failure);
    return failure == nullptr;
}
