#include "CorvantilePlay/PlayMain.hpp"

int main(int argc, char** argv) {
    return corvantile::playMain(argc, argv, corvantile::PlayRegistry::framework());
}
