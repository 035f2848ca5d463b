#include "file_samples.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>

#include "formats.h"

namespace plenar_tool {

namespace {

constexpr FileType kFileTypes[] = {
    {plenar::Uint8, OIIO::TypeDesc::UINT8, 8},    {plenar::Uint10, OIIO::TypeDesc::UINT16, 10},
    {plenar::Uint12, OIIO::TypeDesc::UINT16, 12}, {plenar::Uint16, OIIO::TypeDesc::UINT16, 16},
    {plenar::Half16, OIIO::TypeDesc::HALF, 16},   {plenar::Float32, OIIO::TypeDesc::FLOAT, 32},
};

constexpr int kWordBits = 16;

}  // namespace

const FileType& FileTypeOf(uint32_t type) {
    const auto* const found = std::find_if(std::begin(kFileTypes), std::end(kFileTypes),
                                           [&](const FileType& candidate) { return candidate.type == type; });
    if (found == std::end(kFileTypes)) {
        throw std::runtime_error("picture files don't hold " + std::string(FindType(type).name) + " samples");
    }
    return *found;
}

const FileType& FileTypeOf(const OIIO::ImageSpec& spec) {
    for (const OIIO::TypeDesc& format : spec.channelformats) {
        if (format != spec.format) {
            throw std::runtime_error("its channels have samples of different types");
        }
    }
    const int bits = spec.get_int_attribute("oiio:BitsPerSample", kWordBits);
    const FileType* found = nullptr;
    for (const FileType& candidate : kFileTypes) {
        const bool bitsAgree = candidate.bits == bits || candidate.bits == kWordBits;
        if (spec.format == OIIO::TypeDesc(candidate.base) && (candidate.base != OIIO::TypeDesc::UINT16 || bitsAgree) &&
            found == nullptr) {
            found = &candidate;
        }
    }
    if (found == nullptr) {
        throw std::runtime_error("samples of type " + std::string(spec.format.c_str()) + " can't be carried");
    }
    return *found;
}

AlphaMeaning AlphaMeaningOf(const OIIO::ImageSpec& spec, std::string_view formatName) {
    if (spec.get_int_attribute(kUnassociatedAlpha) != 0) {
        return AlphaMeaning::Straight;
    }
    const bool tells = formatName == "tiff" || formatName == "openexr";
    return tells ? AlphaMeaning::Associated : AlphaMeaning::Unknown;
}

void ChangeAlpha(Picture& picture, AlphaChange change) {
    const AlphaMeaning wanted = change == AlphaChange::Multiply ? AlphaMeaning::Associated : AlphaMeaning::Straight;
    const size_t alpha = picture.channels.find('A');
    if (change == AlphaChange::None || alpha == std::string::npos || picture.channels.size() == 1 ||
        picture.notes.alpha == wanted) {
        return;
    }
    OIIO::ImageSpec spec(static_cast<int>(picture.width), static_cast<int>(picture.height),
                         static_cast<int>(picture.channels.size()), FileTypeOf(picture.type).base);
    spec.alpha_channel = static_cast<int>(alpha);
    OIIO::ImageBuf samples(spec, picture.samples.Data());
    const bool good = change == AlphaChange::Multiply ? OIIO::ImageBufAlgo::premult(samples, samples)
                                                      : OIIO::ImageBufAlgo::unpremult(samples, samples);
    if (!good) {
        throw std::runtime_error("its alpha can't be applied: " + samples.geterror());
    }
    picture.notes.alpha = wanted;
}

}  // namespace plenar_tool
