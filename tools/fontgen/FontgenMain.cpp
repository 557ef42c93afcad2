// vorra-fontgen: renders a TrueType font into one of the data tree's bitmap fonts, STEM.raw
// and STEM.dat (their format is described in FontAtlas.h). Same font file, options and
// FreeType release give the same bytes, so the committed fonts can be checked against it.

#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "FontAtlas.h"

namespace {

const char kUsage[] =
    "usage: vorra-fontgen [--cell PIXELS] [--size PIXELS] [--padding PIXELS] FONT STEM\n"
    "  Writes STEM.raw (16 x 16 cells of alpha) and STEM.dat (advances) from the\n"
    "  Latin-1 characters of FONT.\n"
    "  --cell     pixels on a side of one cell (32: a 512 x 512 texture)\n"
    "  --size     the glyphs' em size in pixels (72% of the cell: 23)\n"
    "  --padding  empty pixels along each cell edge (2)\n";

struct CommandLine {
    fontgen::AtlasOptions options;
    std::string font;
    std::string stem;
};

int ParseNumber(const std::string& name, const std::string& text) {
    std::size_t used = 0;
    int value = 0;
    try {
        value = std::stoi(text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used == 0 || used != text.size()) {
        throw std::runtime_error(name + " needs a whole number, not \"" + text + "\"");
    }
    return value;
}

CommandLine Parse(const std::vector<std::string>& arguments) {
    CommandLine line;
    std::vector<std::string> positional;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        int* number = argument == "--cell"      ? &line.options.cell
                      : argument == "--size"    ? &line.options.pixelSize
                      : argument == "--padding" ? &line.options.padding
                                                : nullptr;
        if (number != nullptr) {
            if (i + 1 == arguments.size()) {
                throw std::runtime_error(argument + " needs a value");
            }
            *number = ParseNumber(argument, arguments[++i]);
        } else if (argument.starts_with("-")) {
            throw std::runtime_error("unknown option " + argument);
        } else {
            positional.push_back(argument);
        }
    }
    if (positional.size() != 2) {
        throw std::runtime_error("expected a font file and an output stem");
    }
    line.font = positional[0];
    line.stem = positional[1];
    return line;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h")) {
        std::cout << kUsage;
        return EXIT_SUCCESS;
    }
    CommandLine line;
    try {
        line = Parse(arguments);
    } catch (const std::exception& error) {
        std::cerr << "vorra-fontgen: " << error.what() << "\n" << kUsage;
        return EXIT_FAILURE;
    }
    try {
        const fontgen::FontAtlas atlas = fontgen::RenderAtlas(line.font, line.options);
        fontgen::WriteAtlas(atlas, line.stem);
        // A text renderer needs the layout; say it so a changed option is noticed.
        std::cout << line.stem << ": " << atlas.side << " x " << atlas.side << " texture, cell "
                  << atlas.cell << ", pen origin x " << atlas.originX << ", baseline "
                  << atlas.baseline << " from the cell top\n";
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "vorra-fontgen: " << error.what() << "\n";
        return EXIT_FAILURE;
    }
}
