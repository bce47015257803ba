#include "Samples.h"

#include <fstream>
#include <iostream>
#include <string>

namespace Samples {

namespace {

struct Sample {
    const char* file;
    std::vector<char> (*build)();
};

constexpr Sample samples[] = {
    {"synthesizer-loop.bin", synthesizerLoop},
    {"detector-board.bin", detectorBoard},
    {"rf-board.bin", rfBoard},
    {"vector-board.bin", vectorBoard},
    {"main-board.bin", mainBoard},
    {"main-board-identity.bin", mainBoardIdentity},
    {"dac-board.bin", dacBoard},
    {"baseband-input-board.bin", basebandInputBoard},
    {"step-attenuator.bin", stepAttenuator},
    {"iq-modulator.bin", iqModulator},
    {"iq-modulator-v20.bin", iqModulatorV20},
    {"iqop6-board.bin", iqOp6Board},
    {"microwave-module.bin", microwaveModule},
    {"synthesizer.bin", synthesizer},
    {"second-edition.bin", secondEdition},
};

} // namespace

} // namespace Samples

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: travik-samples FOLDER\n";
        return 2;
    }
    for (const auto& [file, build] : Samples::samples) {
        const std::vector<char> bytes = build();
        std::ofstream out(std::string(argv[1]) + "/" + file, std::ios::binary);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out.flush()) {
            std::cerr << "travik-samples: " << argv[1] << '/' << file << ": cannot be written\n";
            return 2;
        }
    }
    return 0;
}
