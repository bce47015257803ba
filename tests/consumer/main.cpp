#include <travik/datablocks.h>

int main() {
    Travik::HwDatablockEnd end;
    return end.getBlockSize() == 4 ? 0 : 1;
}
