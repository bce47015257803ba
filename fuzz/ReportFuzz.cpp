#include <travik/datablocks.h>
#include <travik/service/Report.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>

// A report of any bytes is made of well-formed documents that cannot end the element they stand in.
namespace {

void require(bool isTrue) {
    if (!isTrue)
        std::abort();
}

void check(const std::string& document) {
    require(nlohmann::json::accept(document));
    require(document.find_first_of("<>&") == std::string::npos);
}

void report(std::span<const Travik::ReportImage> images, Travik::ReportForm form) {
    const Travik::ReportDocuments documents =
        Travik::reportOf(images, form, "fuzz", {.values = 5000, .bytes = 1 << 16, .blocks = 50});
    check(documents.head);
    for (const std::string& block : documents.blocks)
        check(block);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = [] {
        Travik::CErrorManager::setSignalHandler([](int, const QString&) {});
        Travik::Debug::setMessageBoxHandler([](const QString&, const QString&) {});
        return true;
    }();
    static_cast<void>(quiet);
    constexpr std::size_t most = 100'000;
    const std::string bytes(reinterpret_cast<const char*>(data), std::min(size, most));
    const std::string half = bytes.substr(0, bytes.size() / 2);
    const Travik::ReportImage whole{"whole", bytes};
    const Travik::ReportImage part{"part</script>", half};
    report(std::span(&whole, 1), Travik::ReportForm::Module);
    report(std::array{whole, part}, Travik::ReportForm::Comparison);
    report(std::array{whole, part, whole}, Travik::ReportForm::Family);
    return 0;
}
