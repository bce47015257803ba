#include "Samples.h"

#include <cmath>

namespace Samples {

namespace {

using Travik::SecondEditionTable;

void add(Image& image, const SecondEditionTable& table) {
    const Travik::SecondEditionImage built = Travik::buildSecondEdition(table);
    Travik::HwDatablock2Edition block;
    block.setData(reinterpret_cast<const unsigned char*>(built.bytes.data()),
                  static_cast<unsigned int>(built.bytes.size()));
    image.add(block);
}

} // namespace

std::vector<char> secondEdition() {
    Image image("LEVELCTL", 11426003, 2, 101506);

    SecondEditionTable level{.id = 40100,
                             .updateIndex = 2.5,
                             .rowIdType = Travik::ETypeUint16,
                             .columnIdType = Travik::ETypeChar10,
                             .columns = {{Travik::ETypeUint32, "FREQ_KHZ"},
                                         {Travik::ETypeFix16D2, "LEVEL_DBM"},
                                         {Travik::ETypeFix16D1, "TEMP_DEG"},
                                         {Travik::ETypeFloat, "SLOPE"}}};
    for (unsigned int i = 0; i < 40; ++i)
        level.rows.push_back(
            {.values = {100'000 + 75'000 * i, 13.0 - 0.11 * i, 23.5 + 0.1 * (i % 5), 1.0 + i / 64.0}, .id = i + 1});
    add(image, level);

    SecondEditionTable filter{.id = 40101,
                              .packed = true,
                              .updateIndex = 1.03,
                              .rowIdType = Travik::ETypeChar5,
                              .columns = {{Travik::ETypeDouble}, {Travik::ETypeLongDouble}, {Travik::ETypeChar}}};
    for (int i = 0; i < 16; ++i)
        filter.rows.push_back({.values = {std::ldexp(5.0, i), 1.0L / (1 << i), static_cast<char>('A' + i)},
                               .id = "FLT" + std::to_string(i)});
    add(image, filter);
    return image.finish();
}

} // namespace Samples
