#include "picture_writer.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "file_metadata.h"
#include "file_samples.h"
#include "formats.h"
#include "memory_name.h"

namespace plenar_tool {

namespace {

// Formats that keep samples only roughly. Of all others, a file that reads back with other samples is damaged.
constexpr std::string_view kLossyFormats[] = {"gif", "hdr", "heif", "jpeg", "webp"};

// "Formats" that show a picture or throw it away.
constexpr std::string_view kNoFiles[] = {"null", "term"};

template <size_t Count>
bool IsIn(const std::string_view (&names)[Count], std::string_view name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

[[noreturn]] void Fail(const std::string& text) {
    throw std::runtime_error(text);
}

struct Target {
    std::string format;
    const MemoryName& name;
};

// Words of 10 and 12 bits are stored as such in DPX files alone. Others take them as 16 bits: some would read them back
// rounded.
int StoredBits(const FileType& type, std::string_view format) {
    const bool isShortWord = type.base == OIIO::TypeDesc::UINT16 && format != "dpx";
    return isShortWord ? 16 : type.bits;
}

OIIO::ImageSpec MakeSpec(const Picture& picture, std::string_view format) {
    const FileType& type = FileTypeOf(picture.type);
    OIIO::ImageSpec spec(static_cast<int>(picture.width), static_cast<int>(picture.height),
                         static_cast<int>(picture.channels.size()), type.base);
    if (!picture.notes.metadata.empty()) {
        ApplyMetadata(picture.notes.metadata, spec);
    }
    spec.attribute("oiio:BitsPerSample", StoredBits(type, format));
    spec.attribute(kUnassociatedAlpha, picture.notes.alpha == AlphaMeaning::Associated ? 0 : 1);
    return spec;
}

std::unique_ptr<OIIO::ImageOutput> FindWriter(const std::string& extension, const Picture& picture) {
    auto output = OIIO::ImageOutput::create("picture" + extension);
    if (!output || IsIn(kNoFiles, output->format_name())) {
        OIIO::geterror();
        Fail((extension.empty() ? "a name without extension" : "the extension " + extension) +
             " means no picture format; png, tif, exr and dpx are some that do");
    }
    if (picture.channels == "RGBA" && !output->supports("alpha")) {
        Fail(std::string(output->format_name()) + " files hold no alpha: choose another file format, or --order RGB");
    }
    return output;
}

[[noreturn]] void RefuseType(const std::string& format, uint32_t type) {
    const bool isFloat = type == plenar::Half16 || type == plenar::Float32;
    Fail(format + " files don't hold " + std::string(FindType(type).name) +
         " samples: choose another file format, as exr for Half16 and Float32, or with --out-dir give --ext" +
         (isFloat ? " exr" : " tif"));
}

void WriteTo(const Target& target, OIIO::ImageOutput& output, const OIIO::ImageSpec& spec, const Picture& picture) {
    if (!output.open(target.name.Text(), spec) || !output.write_image(spec.format, picture.samples.Data()) ||
        !output.close()) {
        Fail(output.geterror());
    }
    // Told only now, since some writers complain by themselves about a file without pixels.
    if (output.spec().format != spec.format) {
        RefuseType(target.format, picture.type);
    }
}

std::string DescribeChange(const std::string& format, const OIIO::ImageSpec& spec, const Picture& picture,
                           const Buffer& readBack) {
    const OIIO::ImageBuf before(spec, picture.samples.Data());
    const OIIO::ImageBuf after(spec, readBack.Data());
    const auto difference = OIIO::ImageBufAlgo::compare(before, after, 0, 0);
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(),
                  "exact samples (%s changes %lld of %zu pixels, by up to %.3g of full scale)", format.c_str(),
                  static_cast<long long>(difference.nfail), spec.image_pixels(), difference.maxerror);
    return text.data();
}

void CheckAlpha(AlphaMeaning written, AlphaMeaning held, const std::string& format, std::vector<std::string>& losses) {
    const bool isAssociated = written == AlphaMeaning::Associated;
    if (held == AlphaMeaning::Unknown) {
        if (isAssociated) {
            losses.push_back(format + " files don't say that colours are multiplied by alpha");
        }
    } else if (isAssociated != (held == AlphaMeaning::Associated)) {
        Fail(format + (isAssociated
                           ? " files hold colours that aren't multiplied by alpha: --unpremultiply divides them"
                           : " files hold colours multiplied by alpha: --premultiply multiplies them"));
    }
}

// Reads the file back. What only the format can't hold is added to the losses.
void Compare(const Target& target, const OIIO::ImageSpec& spec, const Picture& picture,
             std::vector<std::string>& losses) {
    const auto input = OIIO::ImageInput::create(target.format);
    OIIO::ImageSpec config;
    config.attribute(kUnassociatedAlpha, 1);
    OIIO::ImageSpec held;
    if (!input || !input->open(target.name.Text(), held, config)) {
        Fail("the " + target.format + " file can't be read back: " + (input ? input->geterror() : OIIO::geterror()));
    }
    if (held.format != spec.format) {
        RefuseType(target.format, picture.type);
    }
    if (picture.channels == "RGBA") {
        CheckAlpha(picture.notes.alpha, AlphaMeaningOf(held, target.format), target.format, losses);
    }
    const bool hasShape = held.width == spec.width && held.height == spec.height && held.nchannels >= spec.nchannels;
    const Buffer readBack(picture.samples.Size());
    if (!hasShape || !input->read_image(0, 0, 0, spec.nchannels, spec.format, readBack.Data()) || input->has_error()) {
        Fail("the " + target.format + " file can't be read back: " + input->geterror());
    }
    if (std::memcmp(readBack.Data(), picture.samples.Data(), readBack.Size()) != 0) {
        if (!IsIn(kLossyFormats, target.format)) {
            Fail("the " + target.format + " file reads back with other samples");
        }
        losses.push_back(DescribeChange(target.format, spec, picture, readBack));
    }
    const auto kept = StatedMetadata(held);
    for (const auto& [name, value] : StatedMetadata(spec)) {
        const auto found = kept.find(name);
        if (found == kept.end() || found->second != value) {
            losses.push_back(std::string(name).append(" ").append(value));
        }
    }
}

}  // namespace

std::vector<std::string> WritePictureFile(const std::string& extension, Picture& picture, AlphaChange alphaChange,
                                          FileDescriptor& memory) {
    ChangeAlpha(picture, alphaChange);
    auto output = FindWriter(extension, picture);
    const std::string format = output->format_name();
    const OIIO::ImageSpec spec = MakeSpec(picture, format);
    memory = MakeSharedMemory(0);
    const MemoryName name(memory, format, extension);
    WriteTo({format, name}, *output, spec, picture);
    output.reset();  // some writers finish their file only now

    std::vector<std::string> losses;
    Compare({format, name}, spec, picture, losses);
    return losses;
}

}  // namespace plenar_tool
