#pragma once

#include "Support.h"

#include <travik/datablock/Bytes.h>
#include <travik/service/Document.h>
#include <travik/service/ImageChange.h>
#include <travik/service/ImageFile.h>
#include <travik/service/Values.h>

#include <bit>
#include <limits>

/// Images that tests make: samples, with values put in, or built of a document.
namespace Images {

using namespace Travik;

using Bytes = std::vector<char>;

inline Bytes sample(const std::string& name) {
    Bytes bytes;
    EXPECT_EQ(readImageFile(std::string(TRAVIK_SAMPLES) + "/" + name + ".bin", bytes), "");
    return bytes;
}

inline Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

inline Bytes built(const std::string& document) {
    const BuiltImage image = buildImage(document);
    EXPECT_EQ(image.error, "");
    return image.bytes;
}

inline Bytes assigned(Bytes image, const std::string& text, bool areStored = false) {
    const Assignment assignment = parseAssignment(text);
    const AssignReport report = assignValues(image, {&assignment, 1}, {.areStored = areStored});
    EXPECT_TRUE(report.succeeded()) << text << ": " << report.refusals.front().why;
    return image;
}

/// A sample with values put in, by assignments as `set` takes them.
inline Bytes changed(const std::string& name, std::initializer_list<std::string> assignments) {
    Bytes image = sample(name);
    for (const std::string& assignment : assignments)
        image = assigned(std::move(image), assignment);
    return image;
}

/// A table of one element of a type, whose bytes are those of the number, with sums that hold.
template <class T>
Bytes tableOf(int type, T number) {
    const std::string document = R"([{"blocks": [{"key": "USER_40000", "fields": {"rows": 1, "columns": 1,
        "column_types": [)" + std::to_string(type) +
                                 R"(]}}, {"key": "END"}]}])";
    Bytes bytes = built(document);
    const ModuleImage image(bytes);
    const BlockLayout layout(image.blocks().front());
    bytes::store(std::span(bytes), layout.find("values")->offset, number);
    resealImage(bytes);
    EXPECT_THAT(checkImage(bytes), testing::IsEmpty());
    return bytes;
}

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double largest = std::numeric_limits<double>::max();
constexpr double smallest = std::numeric_limits<double>::denorm_min();
inline const double nan1 = std::bit_cast<double>(0x7FF8000000000001U);
inline const double nan2 = std::bit_cast<double>(0x7FF8000000000002U);

} // namespace Images
