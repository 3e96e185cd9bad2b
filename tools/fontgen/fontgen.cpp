// fontgen: renders the panel fonts that are not transcribed by hand from a
// DejaVu font with FreeType and writes them as C++ tables
// (src/oled/font_tables_generated.cpp).
#include <ft2build.h>
#include FT_FREETYPE_H

#include <getopt.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

namespace {

const char* kDefaultFolder = "/usr/share/fonts/truetype/dejavu";

// A glyph cell: one brightness 0..255 per pixel, row-major.
struct Cell {
    int width;
    int height;
    std::vector<int> pixels;

    Cell(int w, int h) : width(w), height(h), pixels(static_cast<size_t>(w * h), 0) {}
    int& at(int x, int y) { return pixels[static_cast<size_t>(y * width + x)]; }
    int get(int x, int y) const { return pixels[static_cast<size_t>(y * width + x)]; }
};

struct Face {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    bool mono = false;

    ~Face()
    {
        if (face != nullptr) {
            FT_Done_Face(face);
        }
        if (library != nullptr) {
            FT_Done_FreeType(library);
        }
    }
};

bool open_face(Face& f, const std::string& path, int pixel_width, int pixel_height, bool mono)
{
    if (FT_Init_FreeType(&f.library) != 0 || FT_New_Face(f.library, path.c_str(), 0, &f.face) != 0) {
        fprintf(stderr, "fontgen: cannot load font %s\n", path.c_str());
        return false;
    }
    FT_Set_Pixel_Sizes(f.face, static_cast<FT_UInt>(pixel_width), static_cast<FT_UInt>(pixel_height));
    f.mono = mono;
    return true;
}

// Draws character c into the cell: the pen starts at column pen_x and the
// base line lies under row baseline_row. Ink outside the cell is cut.
void draw(Face& f, unsigned long c, Cell& cell, int pen_x, int baseline_row)
{
    const FT_Int32 flags = FT_LOAD_RENDER | (f.mono ? FT_LOAD_TARGET_MONO : FT_LOAD_TARGET_LIGHT);
    if (FT_Load_Char(f.face, c, flags) != 0) {
        return;
    }
    const FT_GlyphSlot slot = f.face->glyph;
    const FT_Bitmap& bitmap = slot->bitmap;
    // Ink that would fall below the cell (an underscore in a small cell)
    // is raised into it rather than cut.
    const int top = baseline_row + 1 - slot->bitmap_top;
    const int overflow = top + static_cast<int>(bitmap.rows) - cell.height;
    const int raise = overflow > 0 ? (overflow < top ? overflow : top) : 0;
    for (unsigned int row = 0; row < bitmap.rows; ++row) {
        for (unsigned int col = 0; col < bitmap.width; ++col) {
            const unsigned char* line = bitmap.buffer + static_cast<long>(row) * bitmap.pitch;
            int value = 0;
            if (bitmap.pixel_mode == FT_PIXEL_MODE_MONO) {
                value = ((line[col / 8] >> (7 - col % 8)) & 1) != 0 ? 255 : 0;
            } else {
                value = line[col];
            }
            const int x = pen_x + slot->bitmap_left + static_cast<int>(col);
            const int y = top - raise + static_cast<int>(row);
            if (x >= 0 && x < cell.width && y >= 0 && y < cell.height) {
                cell.at(x, y) = value;
            }
        }
    }
}

// Pen position that centres the ink of character c in a cell of the width.
int centred_pen(Face& f, unsigned long c, int cell_width)
{
    if (FT_Load_Char(f.face, c, FT_LOAD_RENDER | FT_LOAD_TARGET_LIGHT) != 0) {
        return 0;
    }
    const FT_GlyphSlot slot = f.face->glyph;
    return (cell_width - static_cast<int>(slot->bitmap.width)) / 2 - slot->bitmap_left;
}

int grey_level(int value)
{
    return (value * 15 + 127) / 255;
}

// Row-major 4-bit packing, two pixels per byte, high nibble left.
void pack_grey(const Cell& cell, std::vector<unsigned>& out)
{
    for (int y = 0; y < cell.height; ++y) {
        for (int x = 0; x < cell.width; x += 2) {
            out.push_back(static_cast<unsigned>(grey_level(cell.get(x, y)) << 4 | grey_level(cell.get(x + 1, y))));
        }
    }
}

// Column-major monochrome, bit 0 the top row; rows first_row..first_row+7.
unsigned column_bits(const Cell& cell, int x, int first_row, int rows)
{
    unsigned bits = 0;
    for (int r = 0; r < rows; ++r) {
        if (cell.get(x, first_row + r) >= 128) {
            bits |= 1u << r;
        }
    }
    return bits;
}

std::string glyph_name(int index, int first_code)
{
    const int code = first_code + index;
    char text[32];
    if (code == '\\') {
        snprintf(text, sizeof(text), "'\\\\'");
    } else {
        snprintf(text, sizeof(text), "'%c'", code);
    }
    return text;
}

void emit(FILE* out, const char* type, const char* name, const char* size, const std::vector<unsigned>& values,
          size_t per_glyph, size_t per_line, const std::vector<std::string>& names)
{
    fprintf(out, "\nconst %s %s[%s] = {\n", type, name, size);
    for (size_t g = 0; g * per_glyph < values.size(); ++g) {
        fprintf(out, "    // %s\n", names[g].c_str());
        for (size_t i = 0; i < per_glyph; ++i) {
            if (i % per_line == 0) {
                fprintf(out, "    ");
            }
            fprintf(out, "0x%02X", values[g * per_glyph + i]);
            fprintf(out, (i % per_line == per_line - 1 || i + 1 == per_glyph) ? ",\n" : ", ");
        }
    }
    fprintf(out, "};\n");
}

void preview(const Cell& cell, int levels)
{
    const char* ramp = " .:-=+*#%@";
    for (int y = 0; y < cell.height; ++y) {
        for (int x = 0; x < cell.width; ++x) {
            const int v = cell.get(x, y);
            putchar(levels == 2 ? (v >= 128 ? '#' : '.') : ramp[grey_level(v) * 9 / 15]);
        }
        putchar('\n');
    }
    putchar('\n');
}

struct Options {
    std::string folder = kDefaultFolder;
    std::string out;
    bool preview = false;
};

void usage(FILE* to)
{
    fprintf(to,
            "usage: fontgen [--fonts DIR] [--out FILE] [--preview]\n"
            "\n"
            "Renders the big panel's greyscale fonts (16x27 digits, 8x13 ASCII) and\n"
            "the small panel's 6x8 and 8x16 ASCII fonts from the DejaVu fonts in DIR\n"
            "(default %s) and writes them as C++ tables.\n"
            "\n"
            "  --fonts DIR  folder with DejaVuSans-Bold.ttf and DejaVuSansMono*.ttf\n"
            "  --out FILE   write the tables to FILE (default: standard output)\n"
            "  --preview    print every glyph as text instead\n"
            "  --help       this text\n",
            kDefaultFolder);
}

}  // namespace

namespace {

struct Fonts {
    std::vector<Cell> big_digits;
    std::vector<Cell> ascii_grey;
    std::vector<Cell> ascii6x8;
    std::vector<Cell> ascii8x16;
};

// 16x27 cells; figures about 13 px wide, rows 4..24 (base line under 24).
bool render_big_digits(const std::string& folder, std::vector<Cell>& cells)
{
    Face f;
    if (!open_face(f, folder + "/DejaVuSans-Bold.ttf", 22, 29, false)) {
        return false;
    }
    for (unsigned long c = '0'; c <= '9'; ++c) {
        Cell cell(16, 27);
        draw(f, c, cell, centred_pen(f, c, 16), 24);
        cells.push_back(cell);
    }
    // '.': a round 4x4 dot on the base line, near the left.
    Cell dot(16, 27);
    for (int y = 21; y <= 24; ++y) {
        for (int x = 1; x <= 4; ++x) {
            const bool corner = (y == 21 || y == 24) && (x == 1 || x == 4);
            dot.at(x, y) = corner ? 119 : 255;
        }
    }
    cells.push_back(dot);
    cells.push_back(Cell(16, 27));
    return true;
}

// 8x13 cells, base line under row 9, descenders down to row 12.
bool render_ascii_grey(const std::string& folder, std::vector<Cell>& cells)
{
    Face f;
    if (!open_face(f, folder + "/DejaVuSansMono-Bold.ttf", 0, 12, false)) {
        return false;
    }
    for (unsigned long c = 32; c <= 126; ++c) {
        Cell cell(8, 13);
        draw(f, c, cell, centred_pen(f, c, 8), 9);
        cells.push_back(cell);
    }
    return true;
}

// Monochrome cells; the glyph starts at column first_column.
bool render_mono(const std::string& path, int pixel_width, int pixel_height, int width, int height, int first_column,
                 int baseline_row, std::vector<Cell>& cells)
{
    Face f;
    if (!open_face(f, path, pixel_width, pixel_height, true)) {
        return false;
    }
    for (unsigned long c = 32; c <= 126; ++c) {
        Cell cell(width, height);
        Cell inner(width - first_column, height);
        draw(f, c, inner, centred_pen(f, c, inner.width), baseline_row);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < inner.width; ++x) {
                cell.at(x + first_column, y) = inner.get(x, y);
            }
        }
        cells.push_back(cell);
    }
    return true;
}

bool render_all(const std::string& folder, Fonts& fonts)
{
    return render_big_digits(folder, fonts.big_digits) && render_ascii_grey(folder, fonts.ascii_grey) &&
           render_mono(folder + "/DejaVuSansMono.ttf", 7, 8, 6, 8, 1, 6, fonts.ascii6x8) &&
           render_mono(folder + "/DejaVuSansMono.ttf", 0, 14, 8, 16, 0, 12, fonts.ascii8x16);
}

void write_tables(FILE* out, const Fonts& fonts)
{
    std::vector<std::string> digit_names;
    for (int i = 0; i < 10; ++i) {
        digit_names.push_back(glyph_name(i, '0'));
    }
    digit_names.push_back("'.'");
    digit_names.push_back("' '");
    std::vector<std::string> ascii_names;
    for (int i = 0; i < 95; ++i) {
        ascii_names.push_back(glyph_name(i, 32));
    }

    std::vector<unsigned> big;
    for (const Cell& cell : fonts.big_digits) {
        pack_grey(cell, big);
    }
    std::vector<unsigned> grey;
    for (const Cell& cell : fonts.ascii_grey) {
        pack_grey(cell, grey);
    }
    std::vector<unsigned> small;
    for (const Cell& cell : fonts.ascii6x8) {
        for (int x = 0; x < 6; ++x) {
            small.push_back(column_bits(cell, x, 0, 8));
        }
    }
    std::vector<unsigned> tall;
    for (const Cell& cell : fonts.ascii8x16) {
        for (int page = 0; page < 2; ++page) {
            for (int x = 0; x < 8; ++x) {
                tall.push_back(column_bits(cell, x, page * 8, 8));
            }
        }
    }

    fprintf(out,
            "// Generated by tools/fontgen from the DejaVu fonts (Bitstream Vera licence);\n"
            "// do not edit. Regenerate with:\n"
            "//   build/bin/fontgen --out src/oled/font_tables_generated.cpp\n"
            "#include \"font_tables.h\"\n");
    emit(out, "unsigned char", "kBigDigit16x27", "12 * 216", big, 216, 8, digit_names);
    emit(out, "unsigned char", "kAscii8x13Grey", "95 * 52", grey, 52, 8, ascii_names);
    // 6x8: six columns per glyph, the first blank.
    emit(out, "unsigned short", "kAscii6x8", "95 * 6", small, 6, 6, ascii_names);
    // 8x16: eight upper-page columns, then eight lower-page columns.
    emit(out, "unsigned short", "kAscii8x16", "95 * 16", tall, 16, 8, ascii_names);
}

}  // namespace

int main(int argc, char** argv)
{
    Options options;
    static const option kOptions[] = {
        {"help", no_argument, nullptr, 'h'},
        {"fonts", required_argument, nullptr, 'f'},
        {"out", required_argument, nullptr, 'o'},
        {"preview", no_argument, nullptr, 'p'},
        {nullptr, 0, nullptr, 0},
    };
    opterr = 0;  // the reason below is ours
    for (int given; (given = getopt_long(argc, argv, ":h", kOptions, nullptr)) != -1;) {
        if (given == 'h') {
            usage(stdout);
            return 0;
        } else if (given == 'f') {
            options.folder = optarg;
        } else if (given == 'o') {
            options.out = optarg;
        } else if (given == 'p') {
            options.preview = true;
        } else {
            fprintf(stderr, "fontgen: unknown or incomplete option '%s'\n", argv[optind - 1]);
            usage(stderr);
            return 2;
        }
    }
    if (optind < argc) {
        fprintf(stderr, "fontgen: unknown or incomplete option '%s'\n", argv[optind]);
        usage(stderr);
        return 2;
    }
    Fonts fonts;
    if (!render_all(options.folder, fonts)) {
        return 1;
    }
    if (options.preview) {
        for (const Cell& cell : fonts.big_digits) {
            preview(cell, 16);
        }
        for (const Cell& cell : fonts.ascii_grey) {
            preview(cell, 16);
        }
        for (const Cell& cell : fonts.ascii6x8) {
            preview(cell, 2);
        }
        for (const Cell& cell : fonts.ascii8x16) {
            preview(cell, 2);
        }
        return 0;
    }
    FILE* out = options.out.empty() ? stdout : fopen(options.out.c_str(), "w");
    if (out == nullptr) {
        fprintf(stderr, "fontgen: cannot write %s\n", options.out.c_str());
        return 1;
    }
    write_tables(out, fonts);
    if (out != stdout && fclose(out) != 0) {
        fprintf(stderr, "fontgen: cannot write %s\n", options.out.c_str());
        return 1;
    }
    return 0;
}
