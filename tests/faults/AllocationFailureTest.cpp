#include "../Support.h"
#include "FailingAllocations.h"

#include <travik/service/BlockCopy.h>
#include <travik/service/BlockForms.h>
#include <travik/service/Describe.h>
#include <travik/service/DiffText.h>
#include <travik/service/Document.h>
#include <travik/service/ImageChange.h>
#include <travik/service/ImageDiff.h>
#include <travik/service/ImageFile.h>
#include <travik/service/ImageWriter.h>
#include <travik/service/InPlaceWriter.h>
#include <travik/service/Report.h>
#include <travik/service/ShowText.h>
#include <travik/service/TableImport.h>
#include <travik/service/Values.h>
#ifdef TRAVIK_HAS_FLEET
#include <travik/fleet/ClickHouse.h>
#include <travik/fleet/Collect.h>
#include <travik/fleet/FleetDatabase.h>
#include <travik/fleet/JsonLines.h>
#endif

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <span>
#include <streambuf>
#include <string>
#include <vector>

/// Lets every allocation fail, one after the other, of what the libraries do. What then comes is std::bad_alloc or the
/// whole result, never less; nothing is lost on the way, and what is promised to stay as it was does.
namespace {

using namespace Travik;
using Faults::FailingAllocation;
namespace fs = std::filesystem;

#ifdef TRAVIK_SANITIZED
constexpr std::size_t mostRuns = 150;
constexpr std::size_t mostChildren = 8;
#else
constexpr std::size_t mostRuns = 1000;
constexpr std::size_t mostChildren = 50;
#endif

/// What is done, after preparations that may take memory; all of it refers to the same things.
struct Work {
    std::function<std::string()> act;   ///< its whole result; "?" where it says that it failed
    std::function<std::string()> state; ///< what is as it was when `act` throws; may be empty
};

struct Scenario {
    const char* name;
    std::function<Work()> prepare;
};

/// Of what is written only the length and a hash, so that no memory is needed.
class Sink : public std::streambuf {
public:
    std::string text() const { return std::to_string(length_) + ' ' + std::to_string(hash_); }

private:
    std::size_t length_ = 0;
    std::size_t hash_ = 0xCBF29CE484222325;

    int_type overflow(int_type character) override {
        ++length_;
        hash_ = (hash_ ^ static_cast<std::size_t>(character)) * 0x100000001B3;
        return traits_type::not_eof(character);
    }
};

template <class Print>
std::string printed(Print print) {
    Sink sink;
    std::ostream os(&sink);
    print(os);
    return os ? sink.text() : "?";
}

std::vector<char> sample(const char* name) {
    std::vector<char> bytes;
    readImageFile(std::string(TRAVIK_SAMPLES "/") + name + ".bin", bytes);
    return bytes;
}

/// Cut off, with a wrong checksum, a block twice, an unknown one, a count beyond the capacity.
std::vector<char> hostile() {
    std::vector<char> bytes = sample("detector-board");
    bytes[50] ^= 1;
    const std::vector<char> more = sample("dac-board");
    bytes.insert(bytes.end() - 4, more.begin(), more.end() - 4);
    bytes.insert(bytes.end() - 4, more.begin(), more.end() - 4);
    const std::vector<char> tables = sample("second-edition");
    bytes.insert(bytes.end() - 4, tables.begin(), tables.end() - 4);
    for (const int byte :
         {0x67, 0x12, 8, 0, 0x91, 0xED, 0, 0, 0xE8, 0x35, 16, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0})
        bytes.insert(bytes.end() - 4, static_cast<char>(byte));
    bytes.resize(bytes.size() - 1);
    return bytes;
}

std::string findingsOf(std::span<const char> bytes) {
    std::string text;
    const ModuleImage module(bytes);
    module.visitFindings([&](const ImageFinding& finding) { text += std::to_string(finding.offset) + finding.text; });
    return text + printed([&](std::ostream& os) { printModuleInfo(moduleInfo(module), os); });
}

std::string printAll(std::span<const char> bytes) {
    HwDatablockOldStyleInterpreter interpreter;
    return printed([&](std::ostream& os) {
        const ModuleImage module(bytes);
        for (const ImageBlock& block : module.blocks()) {
            const std::unique_ptr<HwDatablock> made = makeBlock(block);
            interpreter.printHwDatablockOldStyleInfo(made.get(), os);
            made->printToStream(os);
            if (auto* const table = dynamic_cast<HwDatablock2Edition*>(made.get()))
                table->printDebugPageSummary(table->printToStream2Edition(os, {}), {});
        }
    });
}

std::string showAll(std::span<const char> bytes) {
    const ModuleImage module(bytes);
    const ImageValues values(module);
    std::string text;
    for (const ImageBlock& block : module.blocks())
        appendBlockText(text, block, values.read(block), {.isWhole = true, .fields = {}});
    return text;
}

std::string document(std::span<const char> bytes) {
    const std::vector<std::string> objects{jsonObject("image", bytes, ModuleImage(bytes))};
    return jsonDocument(objects);
}

std::string differences(std::span<const char> before, std::span<const char> after) {
    const ImageDiff diff(before, after);
    return diffText(diff, {"before", "after"}, {.isWhole = true}) + diffDocument(diff, {"before", "after"});
}

std::string report(std::span<const ReportImage> images, ReportForm form) {
    const ReportDocuments documents = reportOf(images, form, "test");
    std::string text = documents.title + documents.head;
    for (const std::string& block : documents.blocks)
        text += block;
    return text;
}

std::string describeAll() {
    const BlockForms forms;
    return listAsText(forms) + describeAsJson(forms, std::vector{BlockForms::of(15716)});
}

Work simple(std::function<std::string()> act) { return {std::move(act), {}}; }

template <class Function>
Work onImage(std::vector<char> bytes, Function function) {
    return simple([bytes = std::move(bytes), function] { return function(std::span<const char>(bytes)); });
}

/// An edit of an image in memory: all or nothing.
template <class Edit>
Work edit(const std::vector<char>& before, Edit function) {
    const auto image = std::make_shared<std::vector<char>>(before);
    const auto told = [image] { return std::string(image->begin(), image->end()); };
    return {[=] {
                const auto count = function(*image);
                FailingAllocation::end();
                const std::string text = std::to_string(count) + told();
                *image = before;
                return text;
            },
            told};
}

/// A record taken over by a block that shares its buffer.
template <class Block>
Work takeOver(bool isGood) {
    const auto block = std::make_shared<Block>();
    const auto record = std::make_shared<Block>();
    record->setAlignment(7);
    if (!isGood)
        record->setChecksum(static_cast<unsigned short>(record->getChecksum() + 1));
    const auto told = [block] { return Support::bytesOf(*block); };
    return {[=] {
                const int refused = block->setBlock(record->getBlock());
                return std::to_string(refused) + told();
            },
            isGood ? nullptr : std::function<std::string()>(told)};
}

/// A block of the other byte order: whatever becomes of a conversion, it is in the order that it says.
Work convert(int id) {
    const auto block = std::shared_ptr(makeBlock(id));
    block->setBlockId(static_cast<unsigned short>(id)); // and with it the checksum
    block->setDataFormatTyp(HwDataFormatForeign);
    const std::string stored = Support::bytesOf(*block);
    const auto told = [block] { return std::to_string(block->getDataFormatTyp()) + Support::bytesOf(*block); };
    const std::string foreign = told();
    block->swapDataTo(HwDataFormatFirmware, static_cast<unsigned short>(id), block.get());
    const std::string converted = told();
    return {[=] {
                Support::setBytes(*block, stored);
                block->setDataFormatTyp(HwDataFormatForeign);
                const bool holds = block->verifyChecksum();
                block->swapDataTo(HwDataFormatFirmware, static_cast<unsigned short>(id), block.get());
                return std::to_string(holds) + told();
            },
            [=] { return told() == foreign || told() == converted ? "" : told(); }};
}

/// Every way of changing an array that shares its elements.
std::string changeArrays() {
    using Array = QMemArray<char>;
    const std::function<void(Array&)> changes[] = {
        [](Array& array) { array.resize(300); },    [](Array& array) { array.detach(); },
        [](Array& array) { array.fill('x', 200); }, [](Array& array) { array.duplicate("ab", 2); },
        [](Array& array) { array = array.copy(); }, [](Array& array) { array.setRawData("cd", 2); },
    };
    std::string text;
    for (const auto& change : changes) {
        Array array;
        array.duplicate("elements", 8);
        const Array shared = array;
        try {
            change(array);
        } catch (const std::bad_alloc&) {
            if (array.size() != 8 || array.nrefs() != 2 || std::memcmp(array.data(), "elements", 8) != 0)
                return "changed";
            throw;
        }
        text += std::string(array.data(), array.size()) + std::string(shared.data(), shared.size());
    }
    return text;
}

/// Without handlers, and nobody takes what is written.
std::string log() {
    const int standardError = ::dup(STDERR_FILENO);
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ::dup2(full, STDERR_FILENO);
    const QString text = QStringLiteral("text");
    static_cast<void>(Debug::isActive(2, 0, 0));
    Debug::enableMessageClassType(2, -1);
    Debug::setClippingLevel(2, 5);
    Debug::println(2, 0, text, 0, 0, nullptr, -1);
    Debug::debugMessageBox(text, text, true, 0, 0, 0, 0);
    Debug::exitDebug();
    HwDatablock::registerErrors();
    ErrorManager()->signal(1040001, text);
    ::dup2(standardError, STDERR_FILENO);
    ::close(standardError);
    ::close(full);
    return {};
}

/// A folder that is gone with its object.
struct Folder {
    fs::path path;
    Folder() {
        // In memory where that is: everything that is written is synced.
        std::string name =
            (fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()) / "travik-faults-XXXXXX";
        path = ::mkdtemp(name.data());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { fs::remove_all(path); }

    static std::string read(const fs::path& file) {
        std::ifstream is(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(is), {}};
    }
    void write(const char* name, const std::string& text) const {
        std::ofstream(path / name, std::ios::binary) << text;
    }
    /// All names with what is in the files.
    std::string state() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::directory_iterator(path))
            files[entry.path().filename()] = read(entry.path());
        std::string text;
        for (const auto& [name, content] : files)
            text += name + '=' + content + ';';
        return text;
    }
};

/// A file replaced, with a backup and another hard link; or written in place.
Work writeFile(const WriteOptions& given) {
    const auto folder = std::make_shared<Folder>();
    WriteOptions options = given;
    if (options.inPlace)
        options.backup = folder->path / "a backup with a long name";
    const std::string name = folder->path / "image.bin";
    const auto state = [folder] { return folder->state(); };
    const std::string old(3000, 'o');
    const auto set = [=] {
        for (const auto& entry : fs::directory_iterator(folder->path))
            fs::remove(entry);
        folder->write("image.bin", old);
        fs::create_hard_link(name, name + "-2");
    };
    set();
    return {[=] {
                ImageEdit change(name);
                for (std::size_t i = 0; i < change.bytes().size(); i += 100)
                    change.bytes()[i] = 'n';
                const WriteReport report = change.commit(options);
                FailingAllocation::end();
                std::string text = report.error;
                for (const std::string& warning : report.warnings)
                    text += warning;
                text += state();
                set();
                return text;
            },
            state};
}

/// A memory that is written in place.
class Memory : public ByteDevice {
public:
    std::string bytes = std::string(100, 'o');
    std::ptrdiff_t readAt(std::size_t offset, std::span<char> into) override {
        return static_cast<std::ptrdiff_t>(bytes.copy(into.data(), into.size(), offset));
    }
    std::ptrdiff_t writeAt(std::size_t offset, std::span<const char> from) override {
        if (offset > 80)
            return -EIO;
        std::ranges::copy(from, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
        return static_cast<std::ptrdiff_t>(from.size());
    }
    int sync() override { return 0; }
};

Work inPlace(std::size_t stride) {
    const auto memory = std::make_shared<Memory>();
    return {[=] {
                const std::string from = memory->bytes;
                std::string to = from;
                for (std::size_t i = 0; i < to.size() - 20 + stride; i += stride)
                    to[i] = 'n';
                const InPlaceReport done = writeInPlace(*memory, from, to);
                FailingAllocation::end();
                std::string text = done.error + memory->bytes;
                memory->bytes.replace(0, from.size(), from);
                return text;
            },
            [=] { return memory->bytes; }};
}

#ifdef TRAVIK_HAS_FLEET
Work collectInto(bool isDatabase) {
    const auto folder = std::make_shared<Folder>();
    return simple([=] {
        std::string text;
        const std::string path = folder->path / "fleet.sqlite";
        fs::remove(path);
        std::unique_ptr<FleetSink> sink;
        if (isDatabase)
            sink = std::make_unique<FleetDatabase>(path, FleetDatabase::Access::Write);
        else
            sink = std::make_unique<JsonLines>(Relation::Scalars, [&](std::string_view lines) { text += lines; });
        const CollectCounts counts = collect({TRAVIK_SAMPLES "/dac-board.bin", TRAVIK_SAMPLES "/end.bin"}, *sink, {});
        return text + std::to_string(counts.added) + ' ' + std::to_string(counts.unreadable);
    });
}
#endif

const std::vector<BlockAddress> ident{parseBlockAddress("2")};

const Scenario scenarios[] = {
    {"interpreter",
     [] { return simple([] { return std::to_string(HwDatablockOldStyleInterpreter().dictionary().size()); }); }},
    {"walk", [] { return onImage(sample("rf-board"), findingsOf); }},
    {"walkHostile", [] { return onImage(hostile(), findingsOf); }},
    {"print", [] { return onImage(hostile(), printAll); }},
    {"printMore", [] { return onImage(sample("step-attenuator"), printAll); }},
    {"printLong", [] { return onImage(sample("iqop6-board"), printAll); }},
    {"show", [] { return onImage(hostile(), showAll); }},
    {"showMore", [] { return onImage(sample("step-attenuator"), showAll); }},
    {"document", [] { return onImage(hostile(), document); }},
    {"build",
     [] {
         return simple([text = document(hostile())] {
             const BuiltImage built = buildImage(text);
             return built.error + std::string(built.bytes.begin(), built.bytes.end());
         });
     }},
    {"diff",
     [] {
         return onImage(sample("detector-board"),
                        [other = hostile()](auto bytes) { return differences(bytes, other); });
     }},
    {"report",
     [] {
         return onImage(hostile(), [](auto bytes) {
             return report(std::vector<ReportImage>{{"a", bytes}}, ReportForm::Module);
         });
     }},
    {"reportFamily",
     [] {
         return onImage(sample("dac-board"), [](auto bytes) {
             return report(std::vector<ReportImage>{{"a", bytes}, {"b", bytes}}, ReportForm::Family);
         });
     }},
    {"describe", [] { return simple(describeAll); }},
    {"secondEdition",
     [] {
         return simple([] {
             const SecondEditionImage built =
                 buildSecondEdition({.id = 1,
                                     .rowIdType = ETypeUint16,
                                     .columns = {{ETypeFix16D1}, {ETypeDouble}, {ETypeChar5}},
                                     .rows = {{{1.5, 2.5, "A"}, 1}, {{1.5, 2.5, "B"}, 2}}});
             return built.text + std::string(built.bytes.begin(), built.bytes.end());
         });
     }},
    {"assign",
     [] {
         return edit(sample("rf-board"), [](std::vector<char>& image) {
             const std::vector<Assignment> wanted{parseAssignment("15716.values[0][0]=1.25"),
                                                  parseAssignment("2.name=x")};
             return assignValues(image, wanted).changeCount();
         });
     }},
    {"assignArray",
     [] {
         return edit(sample("rf-board"), [](std::vector<char>& image) {
             return assignArray(
                        image,
                        {.offset = 2300, .field = "values", .elements = {0, 5}, .values = std::vector<double>{1, 2.5}})
                 .changes;
         });
     }},
    {"reseal",
     [] { return edit(hostile(), [](std::vector<char>& image) { return resealImage(image).changes.size(); }); }},
    {"copy",
     [] {
         return edit(sample("detector-board"), [source = sample("dac-board")](std::vector<char>& image) {
             const std::vector<BlockAddress> all{parseBlockAddress("*")};
             return copyBlocks(image, source, all, {.resizes = true, .appends = true, .forces = true}).edits.size();
         });
     }},
    {"remove",
     [] {
         return edit(sample("detector-board"),
                     [](std::vector<char>& image) { return removeBlocks(image, ident).edits.size(); });
     }},
    {"import",
     [] {
         HwDatablockKelRfboAttRegData table;
         const std::vector<char> image = sample("rf-board");
         const ModuleImage module(image);
         for (const ImageBlock& block : module.blocks())
             if (block.id == 15750)
                 Support::setBytes(table, {block.bytes.begin(), block.bytes.end()});
         std::ostringstream os;
         table.setValue(5, 0, 0);
         table.conv2ascii(os, table);
         return edit(image, [text = os.str()](std::vector<char>& bytes) {
             return importTable(bytes, text, *chooseTable(text, "").format).reading.changes.size();
         });
     }},
    {"takeOver", [] { return takeOver<HwDatablockIdent>(true); }},
    {"takeOverWrong", [] { return takeOver<HwDatablockIdent>(false); }},
    {"takeOverTable", [] { return takeOver<HwDatablockKelRfboAttRegData>(false); }},
    {"convertIdent", [] { return convert(2); }},
    {"convertTable", [] { return convert(15750); }},
    {"arrays", [] { return simple(changeArrays); }},
    {"log", [] { return simple(log); }},
    {"replaceFile", [] { return writeFile({}); }},
    {"replaceFileWithBackup", [] { return writeFile({.backup = ""}); }},
    {"writeFileInPlace", [] { return writeFile({.backup = "", .inPlace = true}); }},
    {"writeInPlace", [] { return inPlace(7); }},
    {"writeInPlaceFails", [] { return inPlace(3); }},
#ifdef TRAVIK_HAS_FLEET
    {"collectLines", [] { return collectInto(false); }},
    {"collectDatabase", [] { return collectInto(true); }},
#endif
};

std::ostream& operator<<(std::ostream& os, const Scenario& scenario) { return os << scenario.name; }

class AllocationFailure : public testing::TestWithParam<Scenario> {
protected:
    void SetUp() override {
        if (GetParam().name != std::string("log"))
            CErrorManager::setSignalHandler([](int, const QString&) {});
    }
    void TearDown() override { CErrorManager::setSignalHandler({}); }
};

/// Nothing where an allocation failed that was asked for.
std::optional<std::string> resultOf(const Work& work, std::size_t number, bool isForEver, std::size_t& count) {
    const FailingAllocation failing(number, isForEver);
    std::optional<std::string> result;
    try {
        result = work.act();
    } catch (const std::bad_alloc&) {
    }
    count = FailingAllocation::count();
    return result;
}

TEST_P(AllocationFailure, OneAfterTheOther) {
    const Work work = GetParam().prepare();
    std::size_t count = 0;
    for (const bool isForEver : {false, true}) {
        const std::string expected = work.act();
        ASSERT_TRUE(resultOf(work, 0 - std::size_t{1}, false, count) == expected) << "not the same twice";
        const std::string before = work.state ? work.state() : "";
        const std::size_t step = 1 + count / mostRuns;
        std::size_t failures = 0;
        for (std::size_t number = 1; number <= count; number += step) {
            const std::ptrdiff_t held = Faults::held();
            std::size_t made = 0;
            if (const auto result = resultOf(work, number, isForEver, made); result && *result != "?") {
                ASSERT_TRUE(*result == expected) << "allocation " << number << " of " << count << ": less than all";
            } else if (!result && work.state) {
                ASSERT_TRUE(work.state() == before) << "changed by allocation " << number << " of " << count;
            }
            failures += made >= number ? 1 : 0;
            ASSERT_EQ(Faults::held(), held) << "allocation " << number << " of " << count;
        }
        EXPECT_GT(failures, 0U);
    }
}

/// Where the first use of something fails, the second succeeds. Each in a process that has not used it yet.
TEST_P(AllocationFailure, AtTheFirstTime) {
    struct Shared {
        std::size_t expected;
        std::size_t count;
    };
    auto* const shared = static_cast<Shared*>(
        ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(shared, MAP_FAILED);
    const auto statusOf = [](auto function) {
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(function() ? 0 : 1);
        int status = -1;
        ::waitpid(child, &status, 0);
        return status;
    };
    const std::hash<std::string> hash;
    ASSERT_EQ(statusOf([&] {
                  const Work work = GetParam().prepare();
                  const auto result = resultOf(work, 0 - std::size_t{1}, false, shared->count);
                  shared->expected = result ? hash(*result) : 0;
                  return result.has_value();
              }),
              0);
    for (std::size_t number = 1; number <= shared->count; number += 1 + shared->count / mostChildren) {
        ASSERT_EQ(statusOf([&] {
                      const Work work = GetParam().prepare();
                      std::size_t count = 0;
                      const auto first = resultOf(work, number, false, count);
                      return (!first || *first == "?" || hash(*first) == shared->expected) &&
                             hash(work.act()) == shared->expected;
                  }),
                  0)
            << "allocation " << number << " of " << shared->count;
    }
    ::munmap(shared, sizeof(Shared));
}

#ifdef TRAVIK_HAS_FLEET
/// What the HTTP library holds afterwards is its own; that it was not asked is told.
TEST(AllocationFailureOfServer, IsTold) {
    ::setenv("CLICKHOUSE_USER", "reader", 1);
    ::setenv("CLICKHOUSE_PASSWORD", "secret", 1);
    std::set<std::string> told;
    for (std::size_t number = 80; number > 0; --number) { // the first one loads the library
        const FailingAllocation failing(number, false);
        try {
            const ClickHouse sink("127.0.0.1:1"); // nobody listens there
            told.insert("nothing");
        } catch (const std::bad_alloc&) {
            told.insert("memory");
        } catch (const FleetError&) {
            told.insert("server");
        }
    }
    EXPECT_THAT(told, testing::ElementsAre("memory", "server"));
}
#endif

INSTANTIATE_TEST_SUITE_P(All, AllocationFailure, testing::ValuesIn(scenarios), testing::PrintToStringParamName());

} // namespace
