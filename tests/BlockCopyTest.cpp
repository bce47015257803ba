#include "Support.h"

#include <travik/registry/ModuleImage.h>
#include <travik/service/BlockCopy.h>
#include <travik/service/ImageFile.h>

#include <algorithm>

namespace BlockCopyTest {

using namespace Travik;
using testing::HasSubstr;
using testing::IsEmpty;

using Bytes = std::vector<char>;

const std::string endBlock("\xFF\xFF\0\0", 4);

/// A block of an identifier without a class, with a sum that holds.
std::string block(unsigned int id, const std::string& data) {
    const auto size = static_cast<unsigned int>(8 + data.size());
    return Support::sealed(Support::image({id, size, 0, 0}) + data);
}

std::string broken(std::string block) {
    block[9] ^= 1;
    return block;
}

Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

std::vector<BlockAddress> namesOf(const std::vector<std::string>& texts) {
    std::vector<BlockAddress> names;
    for (const std::string& text : texts) {
        names.push_back(parseBlockAddress(text));
        EXPECT_EQ(names.back().error, "") << text;
    }
    return names;
}

std::string refusalsOf(const BlockReport& report) {
    std::string all;
    for (const BlockRefusal& refusal : report.refusals)
        all += std::string(refusal.isOfSource ? "source: " : "") + refusal.text + ": " + refusal.why + '\n';
    return all;
}

const std::string a1 = block(4711, "aaaa");
const std::string a2 = block(4711, "AAAA");
const std::string a3 = block(4711, "AaAa");
const std::string longA = block(4711, "aaaaaaaa");
const std::string b1 = block(4712, "bbbb");
const std::string b2 = block(4712, "BBBB");
const std::string c1 = block(4713, "cccc");
const std::string c2 = block(4713, "CCCC");

std::string erased(std::size_t count, char byte = '\xFF') { return std::string(count, byte); }

TEST(BlockCopy, TakesNamesApart) {
    const BlockAddress name = parseBlockAddress("RFBO_*@0x1f");
    EXPECT_EQ(name.error, "");
    EXPECT_EQ(name.key, "RFBO_*");
    EXPECT_EQ(name.offset, 0x1FU);
    EXPECT_FALSE(parseBlockAddress("2").offset);
    for (const char* const wrong : {"", "@", "@1", "2@", "2@x", "2@0x", "2@-1", "2@1 ", "2@1@2"})
        EXPECT_NE(parseBlockAddress(wrong).error, "") << wrong;
}

TEST(BlockCopy, PutsBlocksInTheirPlace) {
    struct Case {
        const char* what;
        std::string source;
        std::string image;
        std::vector<std::string> names;
        CopyOptions options;
        std::string result;
        std::ptrdiff_t growth = 0;
    };
    const std::string tail = "what follows";
    const CopyOptions resize{.resizes = true};
    const CopyOptions append{.appends = true};
    const CopyOptions force{.forces = true};
    const Case cases[] = {
        {"one", a2 + b2 + endBlock, a1 + b1 + c1 + endBlock + tail, {"4711"}, {}, a2 + b1 + c1 + endBlock + tail},
        {"two, the second first", a2 + b2 + endBlock, a1 + b1 + endBlock, {"4712", "4711"}, {}, a2 + b2 + endBlock},
        {"from another order", b2 + a2 + endBlock, a1 + b1 + endBlock, {"4711", "4712"}, {}, a2 + b2 + endBlock},
        {"the same", a1 + endBlock, a1 + endBlock, {"4711"}, {}, a1 + endBlock},
        {"named twice", a2 + endBlock, a1 + b1 + endBlock, {"4711", "4711@0"}, {}, a2 + b1 + endBlock},
        {"a glob, but the end", a2 + b2 + endBlock, a1 + b1 + endBlock, {"*"}, {}, a2 + b2 + endBlock},
        {"pairs", a2 + b1 + a3 + endBlock, a1 + a1 + b2, {"4711"}, {}, a2 + a3 + b2},
        {"one of a pair", a2 + b1 + a3, a1 + a1 + endBlock, {"4711@24"}, {}, a1 + a3 + endBlock},
        {"one of two into the only one", a2 + a3, b1 + a1, {"4711@12"}, {}, b1 + a3},
        {"the only one into one of two", a2, b1 + a1 + a1, {"4711@24"}, {}, b1 + a1 + a2},
        {"by the same offset", a2 + a3, a1 + a1 + a1, {"4711@0xc"}, {}, a1 + a3 + a1},
        {"over a damaged one", a2, broken(a1) + b1, {"4711"}, {}, a2 + b1},
        {"longer, into what is erased",
         longA,
         a1 + b1 + endBlock + erased(6) + tail,
         {"4711"},
         resize,
         longA + b1 + endBlock + erased(2) + tail},
        {"longer, into zeros", longA, a1 + b1 + endBlock + erased(4, 0), {"4711"}, resize, longA + b1 + endBlock},
        {"longer, erased by halves",
         longA,
         a1 + endBlock + erased(2) + tail,
         {"4711"},
         resize,
         longA + endBlock + tail,
         2},
        {"longer, nothing erased", longA, a1 + endBlock + tail, {"4711"}, resize, longA + endBlock + tail, 4},
        {"longer, no end block", longA, a1 + b1, {"4711"}, resize, longA + b1, 4},
        {"shorter", a1, longA + b1 + endBlock + tail, {"4711"}, resize, a1 + b1 + endBlock + erased(4) + tail},
        {"shorter, ahead of zeros",
         a1,
         longA + endBlock + erased(1, 0),
         {"4711"},
         resize,
         a1 + endBlock + erased(5, 0)},
        {"shorter, the last", a1, longA + endBlock, {"4711"}, resize, a1 + endBlock + erased(4)},
        {"shorter, no end block", a1, longA + b1, {"4711"}, resize, a1 + b1, -4},
        {"longer and shorter",
         longA + block(4712, ""),
         a1 + c1 + b1 + endBlock,
         {"*"},
         resize,
         longA + c1 + block(4712, "") + endBlock},
        {"added in the source's order",
         c1 + b2 + a2,
         a1 + endBlock,
         {"4712", "4713", "4711"},
         append,
         a2 + c1 + b2 + endBlock,
         24},
        {"added into what is erased",
         b1,
         a1 + endBlock + erased(13) + tail,
         {"4712"},
         append,
         a1 + b1 + endBlock + erased(1) + tail},
        {"added without an end", b1, a1, {"4712"}, append, a1 + b1, 12},
        {"the second added", a2 + a3, a1 + endBlock, {"4711"}, append, a2 + a3 + endBlock, 12},
        {"damaged, forced", broken(a2), a1, {"4711"}, force, broken(a2)},
        {"over one that lost its size",
         a2,
         Support::image({4711, 0, 0, 0}) + "xxxx" + b1 + endBlock,
         {"4711"},
         force,
         a2 + b1 + endBlock},
        {"over one that was cut off",
         longA,
         b1 + longA.substr(0, 10),
         {"4711"},
         {.resizes = true, .forces = true},
         b1 + longA,
         6},
    };
    for (const Case& test : cases) {
        Bytes image = bytesOf(test.image);
        const BlockReport report = copyBlocks(image, test.source, namesOf(test.names), test.options);
        EXPECT_EQ(refusalsOf(report), "") << test.what;
        EXPECT_EQ(std::string(image.begin(), image.end()), test.result) << test.what;
        EXPECT_EQ(report.growth, test.growth) << test.what;
        for (const BlockEdit& edit : report.edits) {
            const ModuleImage module(image);
            const auto& blocks = module.blocks();
            const auto found = std::ranges::find(blocks, edit.offset, &ImageBlock::offset);
            ASSERT_NE(found, blocks.end()) << test.what << edit.offset;
            EXPECT_EQ(found->id, edit.id) << test.what;
            EXPECT_EQ(found->bytes.size(), edit.after) << test.what;
        }
    }
}

TEST(BlockCopy, RefusesWhatIsNotClear) {
    struct Case {
        std::string source;
        std::string image;
        std::vector<std::string> names;
        CopyOptions options;
        const char* why;
        bool CopyOptions::*remedy = nullptr;
    };
    const CopyOptions all{.resizes = true, .appends = true, .forces = true};
    const std::string sizeless = Support::image({4711, 0, 0, 0}) + "xxxx";
    const Case cases[] = {
        {a2, a1, {"4712"}, all, "source: 4712: no block 4712"},
        {a2, a1, {"RFBO_ATREG_DATA"}, all, "source: RFBO_ATREG_DATA: no block RFBO_ATREG_DATA; near: RFBO_ATTREG_DATA"},
        {a2 + endBlock, a1 + endBlock, {"65535"}, all, "source: 65535: the end block stays"},
        {a2 + endBlock, a1 + endBlock, {"END"}, all, "source: END: the end block stays"},
        {endBlock, a1 + endBlock, {"*"}, all, "source: *: no block * but the end block"},
        {a2, a1, {"4711@4"}, all, "source: 4711@4: not there, but block 4711 at offset 0"},
        {b1, a1, {"4712"}, {}, "4712: no block 4712", &CopyOptions::appends},
        {longA, a1, {"4711"}, {}, "block 4711 has 12 bytes, in the source 16", &CopyOptions::resizes},
        {broken(a2), a1, {"4711"}, {}, "source: 4711: the sums of block 4711 do not hold", &CopyOptions::forces},
        {a2.substr(0, 10), a1, {"4711"}, all, "source: 4711: it is doubtful where the block ends"},
        {sizeless + b1, a1, {"4711"}, all, "source: 4711: it is doubtful where the block ends"},
        {a2, sizeless + b1, {"4711"}, {}, "4711: it is doubtful where the block ends", &CopyOptions::forces},
        {b1, a1 + sizeless, {"4712"}, all, "doubtful where the last block ends"},
        {a2 + a3, a1, {"4711"}, {}, "choose with KEY@OFFSET", &CopyOptions::appends},
        {a2, a1 + a1, {"4711"}, all, "choose with KEY@OFFSET: block 4711 at offset 0, block 4711 at offset 12, in the"},
        {b1 + a2 + b1 + a3, a1 + a1 + a1, {"4711@36"}, all, "leaves open which block is meant"},
        {a2 + a3, a1, {"4711@0", "4711@12"}, all, "two blocks would take the place of block 4711"},
        {a2, a1 + a1, {"4711@0", "4711@12"}, all, "would be copied to two places"},
        {b1, "", {"4712"}, all, "no block at all"},
    };
    for (const Case& test : cases) {
        Bytes image = bytesOf(test.image);
        const BlockReport report = copyBlocks(image, test.source, namesOf(test.names), test.options);
        EXPECT_THAT(refusalsOf(report), HasSubstr(test.why));
        EXPECT_FALSE(report.succeeded()) << test.why;
        EXPECT_THAT(report.edits, IsEmpty());
        EXPECT_EQ(image, bytesOf(test.image)) << test.why;
        for (bool CopyOptions::*const option : {&CopyOptions::resizes, &CopyOptions::appends, &CopyOptions::forces})
            EXPECT_EQ(report.remedies.*option, option == test.remedy) << test.why;
    }
    // All or none.
    Bytes image = bytesOf(a1 + b1);
    EXPECT_EQ(copyBlocks(image, a2 + c2, namesOf({"4711", "4713"})).refusals.size(), 1U);
    EXPECT_EQ(image, bytesOf(a1 + b1));
}

TEST(BlockRemove, TakesBlocksOut) {
    struct Case {
        std::string image;
        std::vector<std::string> names;
        std::string result;
        std::ptrdiff_t growth = 0;
    };
    const Case cases[] = {
        {a1 + b1 + c1 + endBlock, {"4712"}, a1 + c1 + endBlock + erased(12)},
        {a1 + b1 + c1 + endBlock + erased(3, 0) + "x", {"4713", "4711"}, b1 + endBlock + erased(27, 0) + "x"},
        {a1 + b1 + a2, {"4711@24", "4711@24"}, a1 + b1, -12},
        {a1 + b1 + a2 + endBlock, {"471[13]"}, b1 + endBlock + erased(24)},
        {a1 + broken(b1) + c1, {"4712"}, a1 + c1, -12},
        {a1 + endBlock, {"*"}, endBlock + erased(12)},
    };
    for (const Case& test : cases) {
        Bytes image = bytesOf(test.image);
        const BlockReport report = removeBlocks(image, namesOf(test.names));
        EXPECT_EQ(refusalsOf(report), "");
        EXPECT_EQ(std::string(image.begin(), image.end()), test.result) << test.names.front();
        EXPECT_EQ(report.growth, test.growth) << test.names.front();
    }
    const std::vector<std::pair<std::string, const char*>> refused{
        {"4714", "no block 4714"},
        {"4711", "more than one block: block 4711 at offset 0, block 4711 at offset 12"},
        {"4711@24", "not there, but block 4711 at offset 0, block 4711 at offset 12"},
        {"4713", "it is doubtful where the block ends"},
        {"65535", "no block 65535"}};
    for (const auto& [name, why] : refused) {
        Bytes image = bytesOf(a1 + a2 + b1 + c1.substr(0, 9));
        const Bytes before = image;
        EXPECT_THAT(refusalsOf(removeBlocks(image, namesOf({"4712", name}))), testing::StartsWith(name + ": " + why));
        EXPECT_EQ(image, before) << name;
    }
}

// What was taken out and put back is the image that was; so is what was made longer and shorter again.
TEST(BlockRemove, IsUndoneByACopy) {
    for (const std::string name : {"rf-board", "step-attenuator", "second-edition", "microwave-module"}) {
        Bytes original;
        ASSERT_EQ(readImageFile(std::string(TRAVIK_SAMPLES) + "/" + name + ".bin", original), "");
        const ModuleImage module(original);
        ASSERT_TRUE(module.blocks().back().isEnd());
        const ImageBlock& last = module.blocks()[module.blocks().size() - 2];
        for (const ImageBlock& one : module.blocks()) {
            if (one.isEnd())
                continue;
            const auto place = namesOf({std::to_string(one.id) + '@' + std::to_string(one.offset)});
            Bytes image = original;
            ASSERT_EQ(refusalsOf(removeBlocks(image, place)), "") << name << one.offset;
            EXPECT_EQ(image.size(), original.size());
            EXPECT_THAT(checkImage(image), IsEmpty()) << name << one.offset;
            if (&one == &last) {
                ASSERT_EQ(refusalsOf(copyBlocks(image, original, place, {.appends = true})), "") << name;
                EXPECT_EQ(image, original) << name;
            }
        }
    }
}

// Of images that are damaged in any way nothing is read beyond, and what is told of the result is true of it.
TEST(BlockCopy, TakesDamagedImagesForWhatTheyAre) {
    std::mt19937 random(3);
    std::size_t done = 0;
    for (const std::string name : {"detector-board", "second-edition"}) {
        Bytes original;
        ASSERT_EQ(readImageFile(std::string(TRAVIK_SAMPLES) + "/" + name + ".bin", original), "");
        const ModuleImage module(original);
        const auto damaged = [&] {
            Bytes image = original;
            for (auto i = random() % 6; i > 0; --i) // mostly in what the walk goes by
                image[random() % (i % 2 == 0 ? 60 : image.size())] = static_cast<char>(random());
            image.resize(random() % 3 == 0 ? random() % image.size() : image.size());
            return image;
        };
        for (int i = 0; i < 400; ++i) {
            const Bytes source = damaged();
            const Bytes before = damaged();
            Bytes image = before;
            const CopyOptions options{
                .resizes = random() % 2 == 0, .appends = random() % 2 == 0, .forces = random() % 2 == 0};
            const std::string key =
                random() % 4 == 0 ? "1*" : std::to_string(module.blocks()[random() % module.blocks().size()].id);
            const BlockReport report =
                i % 3 == 0 ? removeBlocks(image, namesOf({key})) : copyBlocks(image, source, namesOf({key}), options);
            const auto growth = static_cast<std::ptrdiff_t>(image.size()) - static_cast<std::ptrdiff_t>(before.size());
            ASSERT_EQ(report.growth, growth);
            if (!report.succeeded()) {
                ASSERT_EQ(image, before);
                continue;
            }
            ++done;
            for (const BlockEdit& edit : report.edits) {
                if (edit.kind == BlockEdit::Kind::Removed)
                    continue;
                const std::string_view now(image.data(), image.size());
                const std::string_view from(source.data(), source.size());
                ASSERT_LE(edit.offset + edit.after, now.size());
                EXPECT_NE(from.find(now.substr(edit.offset, edit.after)), std::string_view::npos);
            }
        }
    }
    EXPECT_GT(done, 100U);
}

} // namespace BlockCopyTest
