#include "picture_reader.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "dpx_size.h"
#include "file_metadata.h"
#include "file_samples.h"

namespace plenar_tool {

namespace {

[[noreturn]] void Fail(const std::string& text) {
    throw std::runtime_error(text);
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

std::unique_ptr<OIIO::ImageInput> Open(const std::string& file) {
    OIIO::ImageSpec config;
    config.attribute(kUnassociatedAlpha, 1);
    return OIIO::ImageInput::open(file, &config);
}

// Some readers fill up what a cut file lacks, and only note an error.
void ReadSamples(OIIO::ImageInput& input, const std::string& file, const Buffer& samples) {
    const OIIO::ImageSpec& spec = input.spec();
    if (input.format_name() == std::string("dpx") &&
        LeastDpxBytes(file, static_cast<uint32_t>(spec.nchannels)) > std::filesystem::file_size(file)) {
        Fail("is cut short");
    }
    if (!input.read_image(0, 0, 0, spec.nchannels, spec.format, samples.Data()) || input.has_error()) {
        const std::string why = input.geterror();
        Fail("is cut short or damaged" + (why.empty() ? why : ": " + why));
    }
}

}  // namespace

Picture ReadPictureFile(const std::string& file, AlphaChange alphaChange, FileDescriptor& memory) {
    const auto input = Open(file);
    if (!input) {
        Fail(OIIO::geterror());
    }
    const OIIO::ImageSpec spec = input->spec();
    CheckShape(spec);

    Picture picture;
    picture.width = static_cast<uint32_t>(spec.width);
    picture.height = static_cast<uint32_t>(spec.height);
    picture.channels = ChannelLetters(spec);
    picture.type = FileTypeOf(spec).type;
    picture.notes.metadata = MetadataText(spec);
    picture.notes.alpha = AlphaMeaningOf(spec, input->format_name());
    for (const auto& [name, value] : StatedMetadata(spec)) {
        picture.notes.stated.push_back(std::string(name).append(" ").append(value));
    }
    memory = MakeSharedMemory(spec.image_bytes(true));
    picture.samples = Buffer(memory);
    ReadSamples(*input, file, picture.samples);
    ChangeAlpha(picture, alphaChange);
    if (input->seek_subimage(1, 0)) {
        picture.notes.losses.emplace_back("its pictures after the first");
    }
    return picture;
}

bool RecognisePictureFile(const std::string& file) {
    const bool recognised = Open(file) != nullptr;
    OIIO::geterror();
    return recognised;
}

}  // namespace plenar_tool
