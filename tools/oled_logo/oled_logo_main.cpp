// oled-logo: makes the big panel's logo.bin from a PNG and shows a
// logo.bin as a PNG again.

#include <getopt.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "logo_image.h"
#include "png_file.h"

namespace {

void usage()
{
    std::printf(
        "usage: oled-logo to-bin IN.png OUT.bin [--dither]\n"
        "       oled-logo to-png IN.bin OUT.png\n"
        "to-bin  scales the picture to fit 256 x 64 with its aspect ratio kept,\n"
        "        centres it on black and writes the 8192-byte logo.bin of 16 grey\n"
        "        levels; --dither spreads the rounding (Floyd-Steinberg) for\n"
        "        smooth gradients. Any PNG: grey or colour, alpha, palette, 16 bit.\n"
        "to-png  writes a logo.bin as a 256 x 64 grey PNG to check it.\n"
        "Copy logo.bin to /home/public on the box; it plays at start when the\n"
        "logo page is on (oledctl set logo=1).\n");
}

int fail(const std::string& path, const std::string& reason)
{
    std::fprintf(stderr, "oled-logo: %s: %s\n", path.c_str(), reason.c_str());
    return 1;
}

int to_bin(const std::string& in, const std::string& out, bool dither)
{
    GreyImage picture;
    const std::string error = read_png(in, picture);
    if (!error.empty())
        return fail(in, error);
    const std::vector<std::uint8_t> file = logo::pack(logo::quantise(logo::fit_on_panel(picture), dither));
    std::ofstream stream(out, std::ios::binary | std::ios::trunc);
    stream.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    stream.close();
    if (!stream)
        return fail(out, std::strerror(errno));
    return 0;
}

int to_png(const std::string& in, const std::string& out)
{
    std::ifstream stream(in, std::ios::binary);
    if (!stream)
        return fail(in, std::strerror(errno));
    std::vector<std::uint8_t> file;
    // One byte more than a logo holds tells an oversized file apart.
    file.resize(logo::kFileSize + 1);
    stream.read(reinterpret_cast<char*>(file.data()), static_cast<std::streamsize>(file.size()));
    const std::size_t size = static_cast<std::size_t>(stream.gcount());
    if (size > logo::kFileSize)
        return fail(in, "more than 8192 bytes; a logo.bin holds exactly 8192");
    if (size < logo::kFileSize)
        return fail(in, std::to_string(size) + " bytes; a logo.bin holds exactly 8192");
    file.resize(logo::kFileSize);
    const std::string error = write_grey_png(out, logo::kWidth, logo::kHeight, logo::to_grey(logo::unpack(file)));
    if (!error.empty())
        return fail(out, error);
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> words;
    bool dither = false;
    static const option kOptions[] = {
        {"help", no_argument, nullptr, 'h'}, {"dither", no_argument, nullptr, 'd'}, {nullptr, 0, nullptr, 0}};
    opterr = 0;  // the reason below is ours
    // "-": the verb and the files come back in their order.
    for (int given; (given = getopt_long(argc, argv, "-h", kOptions, nullptr)) != -1;) {
        if (given == 'h') {
            usage();
            return 0;
        }
        if (given == 'd') {
            dither = true;
        } else if (given == 1) {
            words.push_back(optarg);
        } else {
            const std::string word = argv[optind - 1];
            std::fprintf(stderr, "oled-logo: unknown option %s (oled-logo --help)\n",
                         word.substr(0, word.find('=')).c_str());
            return 2;
        }
    }
    if (words.size() == 3 && words[0] == "to-bin")
        return to_bin(words[1], words[2], dither);
    if (words.size() == 3 && words[0] == "to-png" && !dither)
        return to_png(words[1], words[2]);
    std::fprintf(stderr, "oled-logo: expected to-bin IN.png OUT.bin [--dither] or to-png IN.bin OUT.png\n");
    return 2;
}
