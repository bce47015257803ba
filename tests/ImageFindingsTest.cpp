#include "Support.h"

#include <travik/datablock/Checksum.h>

#include <fstream>
#include <iterator>
#include <set>

namespace ImageFindingsTest {

using namespace Travik;
using namespace Support;

const std::string endBlock("\xFF\xFF\0\0", 4);

/// "offset id text" a finding, "note: " ahead of the text of a note.
std::vector<std::string> findingsOf(const std::string& bytes) {
    // On the heap and of exactly this length, so that a read beyond is seen.
    const std::vector<char> exact(bytes.begin(), bytes.end());
    std::vector<std::string> texts;
    for (const ImageFinding& finding : ModuleImage(exact).findings())
        texts.push_back(std::to_string(finding.offset) + " " + (finding.id ? std::to_string(*finding.id) + " " : "") +
                        (finding.grade() == Grade::Note ? "note: " : "") + finding.text);
    return texts;
}

/// The image with another size word, the checksum left as it was.
std::string resized(std::string bytes, unsigned int sizeWord) { return bytes.replace(2, 2, image({sizeWord})); }

std::string ident(unsigned int sizeWord = 44) {
    HwDatablockIdent block;
    block.setSerialNumber(5);
    return resized(bytesOf(block), sizeWord);
}

/// A block of 32768 bytes or more, whose sum is right.
std::string large(unsigned int id = 12306) {
    const auto block = makeBlock(static_cast<int>(id));
    std::string bytes = bytesOf(*block);
    bytes.replace(4, 2, image({0x10000U - sum16(bytes.data(), bytes.size())}));
    return bytes;
}

std::string table(unsigned short id = 40100) {
    SecondEditionTable table{.id = id, .columns = {{ETypeUint32}, {ETypeFix16D2}}};
    for (unsigned int i = 0; i < 5; ++i)
        table.rows.push_back({.values = {i, 0.5}});
    const auto built = buildSecondEdition(table);
    return sealed({built.bytes.begin(), built.bytes.end()});
}

std::string flipped(std::string bytes, std::size_t offset, int bit) {
    bytes[offset] = static_cast<char>(bytes[offset] ^ (1 << bit));
    return bytes;
}

TEST(ImageFindings, AtTheirPlaces) {
    const std::string good = ident();
    const std::string small = sealed(image({4711, 8, 16, 0}));
    const std::string service = bytesOf(*makeBlock(300));
    const std::string sealedService = sealed(service);
    const std::string lost = ", what follows cannot be found";
    const std::string unknown = " 4711 note: unknown identifier";
    const std::string plain = table();
    const std::string oversized = sealed(image({300, 16, 0, 0, 7, 0, 16, 0}));
    struct Case {
        const char* what;
        std::string bytes;
        std::vector<std::string> findings;
    };
    const Case cases[] = {
        {"a sound image", good + sealedService + endBlock, {}},
        {"erased space behind the end", good + endBlock + "\xFF\xFF" + std::string(40, '\0') + "\xFF", {}},

        {"an empty file", "", {"0 no blocks (the data are empty)"}},
        {"erased", std::string(64, '\xFF'), {"0 no blocks (erased)"}},
        {"erased, shorter than an end block", "\xFF\xFF\xFF", {"0 no blocks (erased)"}},
        {"a first sector erased",
         std::string(64, '\xFF') + good + endBlock,
         {"0 no blocks (begins erased)", "64 note: blocks behind the end (2)"}},
        {"nothing but an end block", endBlock, {"0 note: no block ahead of the end block"}},
        {"no end block", good, {"44 note: no end block"}},
        {"an erased end", good + "\xFF\xFF\xFF\xFF", {}},
        {"text behind the end",
         good + endBlock + "ab\xFF\xFF",
         {"48 note: bytes other than FF and 00 behind the end (2 of 4)"}},
        {"blocks behind the end, some damaged",
         good + endBlock + std::string(6, '\xFF') + good + sealedService + service,
         {"54 note: blocks behind the end (2)"}},
        {"the same identifier again and again",
         good + sealedService + good + sealedService + good + endBlock,
         {"56 2 note: repeated identifier (3 blocks, the first at offset 0)",
          "100 300 note: repeated identifier (2 blocks, the first at offset 44)"}},

        {"unknown", good + small + endBlock, {"44" + unknown}},
        {"cut in the identifier", good + "\x02", {"44 0 truncated header" + lost}},
        {"cut in the header",
         good + image({2, 44, 0}),
         {"44 2 truncated header" + lost, "44 2 note: repeated identifier (2 blocks, the first at offset 0)"}},
        {"cut in the end block", good + "\xFF\xFF\x01", {"44 65535 truncated header"}},
        {"cut in the block",
         good + sealedService.substr(0, 10),
         {"44 300 size word past the end of the data (12)" + lost}},
        {"unknown, size 0", image({4711, 0, 16, 0}) + small, {"0 4711 size word 0" + lost}},
        {"unknown, size 6", image({4711, 6, 16, 0}) + small, {"0 4711 size word below the header (6)" + lost}},
        {"unknown, size 9",
         image({4711, 9, 16, 0}) + "x" + endBlock,
         {"0 4711 odd size word (9)", "0 4711 wrong checksum", "0" + unknown}},
        {"unknown, too long", image({4711, 100, 16, 0}), {"0 4711 size word past the end of the data (100)" + lost}},
        {"unknown, wrong sum", image({4711, 8, 16, 0}) + endBlock, {"0 4711 wrong checksum", "0" + unknown}},

        // The class's size leads on where the size word does not.
        {"size 0", ident(0) + sealedService + endBlock, {"0 2 size word 0"}},
        {"size 7", ident(7) + sealedService + endBlock, {"0 2 size word below the header (7)"}},
        {"too long", ident(60000) + sealedService + endBlock, {"0 2 size word past the end of the data (60000)"}},
        {"too short", ident(40) + sealedService + endBlock, {"0 2 wrong size word (40, not 44)"}},
        {"odd", ident(45) + sealedService + endBlock, {"0 2 wrong size word (45, not 44)"}},
        {"swallows what follows", ident(44 + 12) + sealedService + endBlock, {"0 2 wrong size word (56, not 44)"}},
        {"swallows what follows unread",
         resized(large(), 40016 + 128) + good + std::string(84, '\0'),
         {"0 12306 wrong size word (40144, not 40016)", "40060 0 size word 0" + lost}},
        {"wrong sum as well",
         flipped(ident(40), 20, 3) + sealedService + endBlock,
         {"0 2 wrong size word (40, not 44)", "0 2 wrong checksum"}},
        {"the data end where the record does",
         ident(36),
         {"0 2 wrong size word (36, not 44)", "44 note: no end block"}},
        {"nothing leads on",
         flipped(ident(60000), 20, 3) + image({4711, 8, 1, 0}),
         {"0 2 size word past the end of the data (60000)" + lost}},
        {"its own sum vouches for another size", oversized + good + endBlock, {"0 300 wrong size word (16, not 12)"}},
        {"a class of two sizes", sealed(image({12095, 7012, 16, 0}) + std::string(7004, '\0')) + endBlock, {}},
        {"a class of two sizes, neither",
         sealed(image({12095, 7014, 16, 0}) + std::string(7006, '\0')) + endBlock,
         {"0 12095 wrong size word (7014, not 13012 or 7012)"}},

        {"large and right", large() + endBlock, {}},
        {"large, not sealed", bytesOf(*makeBlock(12306)) + endBlock, {}},
        {"large, neither",
         flipped(large(), 5000, 3) + endBlock,
         {"0 12306 note: stray checksum word (of a block that is not checked)"}},

        {"a table", plain + endBlock, {}},
        {"a table, a value changed",
         flipped(plain, 40, 0) + endBlock,
         {"0 40100 wrong checksum", "0 40100 wrong CRC-32"}},
        {"a table, sealed by who knows nothing of the CRC",
         sealed(flipped(plain, 40, 0)) + endBlock,
         {"0 40100 wrong CRC-32"}},
        {"a table of another size than it says",
         resized(plain, 300) + good + std::string(300, '\0'),
         {"0 40100 wrong size word (300, not " + std::to_string(plain.size()) + ")",
          std::to_string(plain.size() + 44) + " 0 size word 0" + lost}},

        {"counts beyond",
         sealed(image({12310, 56, 0, 0, 11, 0, 0xFFFF, 0xFFFF}) + std::string(40, '\0')) + endBlock,
         {"0 12310 note: count beyond the capacity (rows 11 of 10)",
          "0 12310 note: count beyond the capacity (columns 4294967295 of 1)"}},
        {"a count that is negative with a sign, and one beyond the rows that are there",
         sealed(image({12095, 7012, 0, 0, 0xFFFF, 0xFFFF}) + std::string(7000, '\0')) +
             sealed(image({12096, 7012, 0, 0, 8, 0}) + std::string(7000, '\0')) + endBlock,
         {"0 12095 note: count beyond the capacity (count 4294967295 of 7)",
          "7012 12096 note: count beyond the capacity (count 8 of 7)"}},
    };
    for (const Case& test : cases)
        EXPECT_EQ(findingsOf(test.bytes), test.findings) << test.what;
}

TEST(ImageFindings, BlocksOfAnotherSizeAreThereWhole) {
    const std::string bytes = ident(36) + sealed(bytesOf(*makeBlock(300)));
    const ModuleImage image(bytes);
    ASSERT_EQ(image.blocks().size(), 2U);
    const ImageBlock& block = image.blocks()[0];
    EXPECT_EQ(block.bytes.size(), 44U);
    EXPECT_FALSE(block.checksumHolds);
    EXPECT_TRUE(block.checksumChecked && block.endsKnown);
    const std::string alone = flipped(ident(0), 20, 3) + "and what nobody knows";
    const ModuleImage lone(alone);
    EXPECT_EQ(lone.blocks()[0].bytes.size(), 44U) << "the record may be there, wherever the next begins";
    EXPECT_FALSE(lone.blocks()[0].endsKnown);
}

// The sums that the walk computes are those that the block itself verifies.
TEST(ImageFindings, SumsAreTheBlocksOwn) {
    std::mt19937 random(4711);
    const DebugOutput quiet; // of the odd sizes
    for (int round = 0; round < 400; ++round) {
        const std::size_t size = round % 4 == 0 ? 32760 + random() % 20 : 8 + random() % 60;
        std::string bytes = resized(randomBytes(random, size), static_cast<unsigned int>(size));
        bytes.replace(0, 2, image({4711}));
        HwDatablock plain(false);
        setBytes(plain, bytes);
        if (round % 2 == 0 && size >= 12)
            bytes.replace(8, 4, image({plain.computeChecksum32() & 0xFFFFU, plain.computeChecksum32() >> 16U}));
        if (round % 3 == 0)
            bytes = sealed(bytes);
        setBytes(plain, bytes);
        const ModuleImage module(bytes);
        const ImageBlock& block = module.blocks().front();
        EXPECT_EQ(block.checksumHolds, plain.verifyChecksum()) << size;
        EXPECT_EQ(block.checksumChecked, size < 0x8000 || sum16(bytes.data(), size) == 0) << size;
        if (size >= 12) {
            EXPECT_EQ(block.crcHolds, plain.verifyChecksum32()) << size;
        }
    }
}

TEST(ImageFindings, DocumentedKindByKind) {
    std::ifstream file(TRAVIK_SOURCE_FOLDER "/docs/findings.md");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    for (const FindingKind& kind : findingKinds()) {
        const std::string row =
            "| " + std::string(kind.name) + " | " + (kind.grade == Grade::Damage ? "damage" : "note") + " | ";
        EXPECT_THAT(text, testing::HasSubstr(row));
    }
}

// Every command asks the library for one of these; whatever happened to an image, they say the same of it. Hands back
// all that is found.
std::vector<ImageFinding> expectAgreement(const std::string& bytes, const std::string& what) {
    const ModuleImage module(bytes);
    const std::vector<ImageFinding> damage = module.problems();
    const std::vector<ImageFinding> findings = module.findings();
    std::vector<ImageFinding> listed = findings;
    std::erase_if(listed, [](const ImageFinding& finding) { return finding.grade() == Grade::Note; });
    EXPECT_EQ(listed, damage) << what;

    std::vector<ImageFinding> dumped;
    std::set<int> wrong;
    std::size_t next = 0;
    for (const ImageBlock& block : module.blocks()) {
        EXPECT_EQ(block.offset, next) << what;
        next += block.bytes.size();
        for (ImageFinding& finding : module.problems(block))
            dumped.push_back(std::move(finding));
        const bool isDamaged = !module.problems(block).empty();
        // Where the list says "wrong" or "cut off" there is damage.
        EXPECT_TRUE(block.checksumHolds || isDamaged) << what;
        EXPECT_TRUE(block.endsKnown || isDamaged) << what;
        if (!block.checksumHolds)
            wrong.insert(block.id);
    }
    EXPECT_EQ(module.end(), next) << what;
    if (!module.blocks().empty()) {
        EXPECT_EQ(dumped, damage) << what;
    } else {
        EXPECT_EQ(damage.size(), 1U) << what;
    }

    const ModuleInfo info = moduleInfo(module);
    EXPECT_EQ(info.problems, damage) << what;
    EXPECT_EQ(std::set<int>(info.wrongChecksums.begin(), info.wrongChecksums.end()), wrong) << what;
    const bool hasIdent = std::ranges::any_of(module.blocks(), [](const ImageBlock& block) {
        return (block.id == 2 || block.id == 10) && (block.endsKnown || block.bytes.size() >= 44);
    });
    EXPECT_EQ(info.identity.has_value(), hasIdent) << what;
    return findings;
}

// Of all single bits of a sample's block headers: how many go unseen, and how many only a note tells. The 16 bits of
// the end block's data word are unseen in every image. Of a block of 32768 bytes and more, whose checksum word is 0 as
// the library's setters leave it, the alignment word is, and only a note tells of the checksum word and of an
// identifier that becomes an unknown one, or another of the same size.
struct Sample {
    const char* name;
    std::size_t unseen;
    std::size_t noted;
};

class Samples : public testing::TestWithParam<Sample> {
protected:
    std::string bytes;

    void SetUp() override {
        std::ifstream file(TRAVIK_SOURCE_FOLDER "/samples/" + std::string(GetParam().name) + ".bin", std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(file), {});
        ASSERT_FALSE(bytes.empty());
    }
};

TEST_P(Samples, AreSound) { EXPECT_EQ(findingsOf(bytes), std::vector<std::string>()); }

TEST_P(Samples, AgreeUnderEveryFlipOfAHeader) {
    const ModuleImage whole(bytes);
    std::size_t unseen = 0;
    std::size_t noted = 0;
    std::string changed = bytes;
    for (const ImageBlock& block : whole.blocks()) {
        const std::size_t header = std::min(sizeof(HwSDatablockHeader), block.bytes.size());
        for (std::size_t bit = 0; bit < header * 8; ++bit) {
            char& byte = changed[block.offset + bit / 8];
            const char before = byte;
            byte = static_cast<char>(byte ^ (1 << (bit % 8)));
            const auto findings =
                expectAgreement(changed, std::to_string(block.offset) + " bit " + std::to_string(bit));
            const bool isDamaged = std::ranges::count(findings, Grade::Damage, &ImageFinding::grade) > 0;
            unseen += findings.empty();
            noted += !findings.empty() && !isDamaged;
            byte = before;
        }
    }
    EXPECT_EQ(unseen, GetParam().unseen);
    EXPECT_EQ(noted, GetParam().noted);
}

// At every length; of the larger images, whose walk takes as long as they are, at every length near a header and at
// some between.
TEST_P(Samples, AgreeUnderTruncation) {
    const ModuleImage whole(bytes);
    const std::size_t step = bytes.size() < 10000 ? 1 : 1 + bytes.size() / 100;
    std::set<std::size_t> sizes;
    for (std::size_t size = 0; size < bytes.size(); size += step)
        sizes.insert(size);
    for (const ImageBlock& block : whole.blocks()) {
        for (std::size_t near = 0; near < 10 && block.offset + near < bytes.size(); ++near)
            sizes.insert(block.offset + near);
    }
    for (const std::size_t size : sizes) {
        const std::string cut = bytes.substr(0, size);
        EXPECT_FALSE(expectAgreement(cut, std::to_string(size)).empty()) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(All, Samples,
                         testing::Values(Sample{"baseband-input-board", 16, 0}, Sample{"dac-board", 16, 0},
                                         Sample{"detector-board", 16, 0}, Sample{"iq-modulator", 16, 0},
                                         Sample{"iq-modulator-v20", 16, 0}, Sample{"iqop6-board", 16, 0},
                                         Sample{"main-board", 16, 0}, Sample{"microwave-module", 16 + 2 * 16, 59},
                                         Sample{"rf-board", 16, 0}, Sample{"second-edition", 16, 0},
                                         Sample{"step-attenuator", 16, 0}, Sample{"synthesizer", 16, 0},
                                         Sample{"synthesizer-loop", 16 + 3 * 16, 85}, Sample{"vector-board", 16, 0}),
                         [](const auto& sample) {
                             std::string name = sample.param.name;
                             std::ranges::replace(name, '-', '_');
                             return name;
                         });

} // namespace ImageFindingsTest
