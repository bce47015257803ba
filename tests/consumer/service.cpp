#include <travik/service/ImageFile.h>

int main() {
    std::vector<char> bytes;
    return Travik::readImageFile("no such image", bytes).empty() ? 1 : 0;
}
