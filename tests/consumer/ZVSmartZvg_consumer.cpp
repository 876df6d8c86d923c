#include <ZVSmartZvg/ZVSmartZvg.h>

int main() {
    return ZVSmartZvg::CZVLGBlockSaver::Test() ? 0 : 1;
}
