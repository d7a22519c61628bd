// Writes the firmware and FPGA images of the tests to a folder, laid out as the option LUX_IMAGES_DIR wants it.
//
//   make_images FOLDER

#include "support/TestImages.h"

#include <filesystem>
#include <fstream>

namespace {

bool write(const std::filesystem::path &path, const testImages::Bytes &bytes)
{
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()), std::streamsize(bytes.size()));
    file.close();
    return !file.fail();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fputs("make_images FOLDER\n", stderr);
        return 2;
    }
    const std::filesystem::path folder(argv[1]);
    std::filesystem::create_directories(folder / "fwusb");
    std::filesystem::create_directories(folder / "fwfpga");
    bool written = write(folder / "fwusb" / testImages::imageFirmware, testImages::firmware(testImages::imageFirmware));
    for (const std::string &name : testImages::hexFirmwares) {
        written = write(folder / "fwusb" / name, testImages::firmware(name)) && written;
    }
    for (const auto &[name, size] : testImages::fpgaImages) {
        written = write(folder / "fwfpga" / name, testImages::fpga(name)) && written;
    }
    return written ? 0 : 1;
}
