// Arbitrary bytes as a module image, which has to come back from its document; and as a document, from which an image
// is built or not. What is built comes back from its own document, too.
#include <travik/datablocks.h>
#include <travik/service/Document.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

std::string documentOf(std::span<const char> bytes) {
    const std::string object = Travik::jsonObject("image", bytes, Travik::ModuleImage(bytes));
    return Travik::jsonDocument({&object, 1});
}

void expectBack(std::span<const char> bytes) {
    const Travik::BuiltImage built = Travik::buildImage(documentOf(bytes));
    if (!built.error.empty() || !std::ranges::equal(built.bytes, bytes))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = [] {
        Travik::CErrorManager::setSignalHandler([](int, const QString&) {});
        Travik::Debug::setMessageBoxHandler([](const QString&, const QString&) {});
        return true;
    }();
    static_cast<void>(quiet);
    const std::span bytes(reinterpret_cast<const char*>(data), size);
    expectBack(bytes);
    // A document of a few characters may ask for 256 MiB; that takes its time, and is no other than a quarter of one.
    Travik::BuildOptions options;
    options.largestSize = std::size_t{1} << 18U;
    const Travik::BuiltImage built = Travik::buildImage({bytes.data(), bytes.size()}, options);
    if (!built.error.empty() && !built.bytes.empty())
        std::abort();
    expectBack(built.bytes);
    return 0;
}
