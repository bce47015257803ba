#pragma once

#include <travik/datablocks.h>

#include <memory>
#include <vector>

/// Sample images, built through the library's own setters. One function a module, one file a family of modules.
namespace Samples {

/// An image that grows block by block.
class Image {
public:
    /// Begins with the ident block that every module has.
    Image(const char* name, unsigned int partNumber, unsigned char variant, unsigned int serialNumber);

    /// Appends a block, its checksum refreshed.
    Image& add(Travik::HwDatablock& block);
    Image& add(Travik::HwDatablock&& block) { return add(block); }
    /// Appends the end block; nothing follows it.
    std::vector<char> finish();

private:
    std::vector<char> bytes_;
};

/// A table without a class of its own: N rows by M columns of stored integers.
template <unsigned int N, unsigned int M>
using BareTable = Travik::HwDatablockTemplate<Travik::MiscData<int, N, M>, int, double, N, M>;

/// A new table of a registered identifier, its counts set to the whole capacity.
template <unsigned int N, unsigned int M>
std::unique_ptr<BareTable<N, M>> bareTable(int id) {
    std::unique_ptr<BareTable<N, M>> table(dynamic_cast<BareTable<N, M>*>(Travik::makeBlock(id).release()));
    table->setNumberOfRows(N);
    table->setNumberOfColumns(M);
    return table;
}

std::vector<char> synthesizerLoop();
std::vector<char> detectorBoard();
std::vector<char> rfBoard();
std::vector<char> vectorBoard();
std::vector<char> mainBoard();
std::vector<char> mainBoardIdentity();
std::vector<char> dacBoard();
std::vector<char> basebandInputBoard();
std::vector<char> stepAttenuator();
std::vector<char> iqModulator();
std::vector<char> iqModulatorV20();
std::vector<char> iqOp6Board();
std::vector<char> microwaveModule();
std::vector<char> synthesizer();
std::vector<char> secondEdition();

} // namespace Samples
