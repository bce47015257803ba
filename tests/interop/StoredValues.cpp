// Prints every stored number and text of images as the library reads them, for a comparison with other readers.
//
//   travik-stored-values IMAGE
//
// A line "block OFFSET ID KIND LENGTH" for each block: KIND is "class", "table" for one that describes itself, or
// "none"; LENGTH is how many of its bytes are there. Then a line "field NAME VALUE..." for each of its fields, a
// value for each element: a number of 64 bits in decimal, any other as the sixteen hexadecimal digits of the double
// that it is ("nan" for every NaN), a text as the hexadecimal digits of its characters behind a "t".

#include <travik/datablock/Bytes.h>
#include <travik/service/ImageFile.h>
#include <travik/service/StoreValue.h>
#include <travik/service/Values.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace {

using namespace Travik;

std::string hexText(std::string_view latin1) {
    std::ostringstream text;
    text << 't' << std::hex << std::setfill('0');
    for (const char c : latin1)
        text << std::setw(2) << static_cast<unsigned int>(static_cast<unsigned char>(c));
    return text.str();
}

std::string hexNumber(double number) {
    if (std::isnan(number))
        return "nan";
    std::ostringstream text;
    text << std::hex << std::setfill('0') << std::setw(16) << std::bit_cast<std::uint64_t>(number);
    return text.str();
}

void printField(std::span<const char> block, const Field& field) {
    std::cout << "field " << field.name;
    Field plain = field;
    plain.scale = 1.0;
    plain.zero = -0.0; // the one number that leaves a negative zero as it is
    const bool isLong = field.stored == Stored::U64 || field.stored == Stored::I64;
    std::vector<double> numbers(field.stored == Stored::Text || isLong ? 0 : field.elements());
    if (!numbers.empty())
        fieldValues(block, plain, numbers);
    for (unsigned int i = 0; i < field.elements(); ++i) {
        if (field.stored == Stored::Text)
            std::cout << ' ' << hexText(bytes::text(block, field.elementOffset(i), field.width));
        else
            std::cout << ' ' << (isLong ? storedText(block, field, i) : hexNumber(numbers[i]));
    }
    std::cout << '\n';
}

} // namespace

int main(int argc, char** argv) {
    std::ios_base::sync_with_stdio(false);
    std::vector<char> bytes;
    const std::string why = argc == 2 ? readImageFile(argv[1], bytes) : "one image, please";
    if (!why.empty()) {
        std::cerr << "travik-stored-values: " << why << '\n';
        return 2;
    }
    const ModuleImage image(bytes);
    for (const ImageBlock& block : image.blocks()) {
        const char* const kind = block.isSecondEdition ? "table" : block.entry ? "class" : "none";
        std::cout << "block " << block.offset << ' ' << block.id << ' ' << kind << ' ' << block.bytes.size() << '\n';
        const BlockLayout layout(block);
        for (const Field& field : layout.fields())
            printField(block.bytes, field);
    }
    return std::cout.flush() ? 0 : 2;
}
