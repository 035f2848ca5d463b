#include "picture_file.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

#include "formats.h"
#include "phase_timer.h"
#include "stream_io.h"

namespace plenar_tool {

namespace {

struct FileType {
    uint32_t type;
    OIIO::TypeDesc::BASETYPE base;
    int bits;
};

constexpr FileType kFileTypes[] = {
    {plenar::Uint8, OIIO::TypeDesc::UINT8, 8},    {plenar::Uint10, OIIO::TypeDesc::UINT16, 10},
    {plenar::Uint12, OIIO::TypeDesc::UINT16, 12}, {plenar::Uint16, OIIO::TypeDesc::UINT16, 16},
    {plenar::Half16, OIIO::TypeDesc::HALF, 16},   {plenar::Float32, OIIO::TypeDesc::FLOAT, 32},
};

[[noreturn]] void Fail(const std::string& text) {
    throw std::runtime_error(text);
}

uint32_t NaturalType(const OIIO::ImageSpec& spec) {
    for (const OIIO::TypeDesc& format : spec.channelformats) {
        if (format != spec.format) {
            Fail("its channels have samples of different types");
        }
    }
    const int bits = spec.get_int_attribute("oiio:BitsPerSample", 16);
    for (const FileType& candidate : kFileTypes) {
        const bool bitsAgree = candidate.base != OIIO::TypeDesc::UINT16 || candidate.bits == bits;
        if (spec.format == OIIO::TypeDesc(candidate.base) && bitsAgree) {
            return candidate.type;
        }
    }
    if (spec.format == OIIO::TypeDesc::UINT16) {
        return plenar::Uint16;
    }
    Fail("samples of type " + std::string(spec.format.c_str()) + " can't be carried");
}

// One letter for each channel. Files with three or four channels of any name are taken as RGB and RGBA, and a single
// channel is taken as a matte.
std::string ChannelLetters(const OIIO::ImageSpec& spec) {
    const auto count = static_cast<size_t>(spec.nchannels);
    std::string letters(count, '?');
    for (size_t i = 0; i < count; ++i) {
        const std::string& name = spec.channelnames[i];
        if (name.size() == 1 && letters.find(name[0]) == std::string::npos && std::string("RGBA").find(name[0]) < 4) {
            letters[i] = name[0];
        }
    }
    const bool hasColour = std::all_of(std::begin("RGB"), std::end("RGB") - 1,
                                       [&](char channel) { return letters.find(channel) != std::string::npos; });
    if (!hasColour && (count == 3 || count == 4)) {
        return count == 3 ? "RGB" : "RGBA";
    }
    return count == 1 ? "A" : letters;
}

void CheckShape(const OIIO::ImageSpec& spec) {
    if (spec.deep || spec.depth > 1) {
        Fail("deep and volume pictures can't be carried");
    }
    if (spec.image_bytes(true) > kMaxBufferBytes) {
        Fail("the picture takes more than 4 GiB");
    }
}

}  // namespace

Picture ReadPicture(const std::filesystem::path& path) {
    const PhaseTimer timer(Phase::Read);
    if (IsStream(path)) {
        Fail("a picture file can't pass through a pipe: give a file's name, or --raw for samples");
    }
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    const auto input = OIIO::ImageInput::open(path.string(), &config);
    if (!input) {
        Fail(OIIO::geterror());
    }
    const OIIO::ImageSpec& spec = input->spec();
    CheckShape(spec);

    Picture picture;
    picture.width = static_cast<uint32_t>(spec.width);
    picture.height = static_cast<uint32_t>(spec.height);
    picture.channels = ChannelLetters(spec);
    picture.type = NaturalType(spec);
    picture.samples = Buffer(spec.image_bytes(true));
    if (!input->read_image(0, 0, 0, spec.nchannels, spec.format, picture.samples.Data())) {
        Fail(input->geterror());
    }
    return picture;
}

void WritePicture(const std::filesystem::path& target, const Picture& picture) {
    const PhaseTimer timer(Phase::Write);
    if (IsStream(target)) {
        Fail("a picture file can't pass through a pipe: give a file's name, or --raw for samples");
    }
    const auto* const type = std::find_if(std::begin(kFileTypes), std::end(kFileTypes),
                                          [&](const FileType& candidate) { return candidate.type == picture.type; });
    if (type == std::end(kFileTypes)) {
        Fail("picture files don't hold " + std::string(FindType(picture.type).name) + " samples");
    }
    OIIO::ImageSpec spec(static_cast<int>(picture.width), static_cast<int>(picture.height),
                         static_cast<int>(picture.channels.size()), type->base);
    spec.attribute("oiio:BitsPerSample", type->bits);
    spec.attribute("oiio:UnassociatedAlpha", 1);

    PendingFile pending(target);
    const auto output = OIIO::ImageOutput::create(target.string());
    if (!output) {
        Fail("can't write " + target.string() + ": " + OIIO::geterror());
    }
    const std::string format = output->format_name();
    if (picture.channels == "RGBA" && !output->supports("alpha")) {
        Fail(format + " files hold no alpha: choose another file format, or --order RGB");
    }
    if (!output->open(pending.Path().string(), spec)) {
        Fail("can't write " + target.string() + ": " + output->geterror());
    }
    if (!output->write_image(spec.format, picture.samples.Data()) || !output->close()) {
        Fail("can't write " + target.string() + ": " + output->geterror());
    }
    // Told only now, since some writers complain by themselves about a file without pixels.
    if (output->spec().format != spec.format) {
        Fail(format + " files don't hold " + std::string(FindType(picture.type).name) +
             " samples: choose another file format");
    }
    pending.Commit();
}

}  // namespace plenar_tool
