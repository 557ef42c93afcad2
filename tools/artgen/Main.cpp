// vorra-artgen: renders every image of the data tree into a work directory.
#include <cstdio>
#include <string>

#include "Artwork.h"
#include "ContactSheet.h"

int main(int argc, char** argv) {
    std::string error;
    if (argc == 4 && std::string(argv[1]) == "--sheet") {
        if (!artgen::WriteContactSheets(argv[2], argv[3], error)) {
            std::fprintf(stderr, "vorra-artgen: %s\n", error.c_str());
            return 1;
        }
        return 0;
    }
    if (argc != 2) {
        std::fprintf(stderr,
                     "usage: vorra-artgen OUTPUT_WORKDIR\n"
                     "       vorra-artgen --sheet WORKDIR SHEET_PREFIX   (review sheets)\n");
        return 2;
    }
    for (const artgen::Artwork& artwork : artgen::AllArtwork()) {
        if (!artgen::WriteArtwork(artwork, argv[1], error)) {
            std::fprintf(stderr, "vorra-artgen: %s\n", error.c_str());
            return 1;
        }
    }
    return 0;
}
