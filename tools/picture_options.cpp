#include "picture_options.h"

#include <memory>
#include <string>

#include "format_names.h"
#include "formats.h"
#include "nearest_name.h"

namespace plenar_tool {

namespace {

struct GivenNames {
    std::string order;
    std::string type;
};

// The name of a video format stands for an order and a type; --type then may only repeat its type.
void Resolve(const GivenNames& given, PictureOptions& picture) {
    const NamedFormat named = given.order.empty() ? NamedFormat{} : FindOrderName(given.order);
    picture.order = named.order;
    picture.type = given.type.empty() ? named.type : FindTypeName(given.type);
    if (named.type != 0 && picture.type != named.type) {
        const std::string order(FindOrder(named.order).name);
        throw UsageError("--order " + given.order + " means " + order + " with " +
                         std::string(FindType(named.type).name) + ": for " + given.type + " give --order " + order);
    }
}

}  // namespace

void AddPictureOptions(CLI::App& command, PictureOptions& picture) {
    const auto given = std::make_shared<GivenNames>();
    command
        .add_option("--order", given->order,
                    "How the samples of the picture are arranged: " + JoinNames(OrderNames(), "or") +
                        "; or a video format, which gives the type too: " + JoinNames(VideoFormatNames(), "or"))
        ->type_name("NAME");
    command.add_option("--type", given->type, "The type of a sample: " + JoinNames(TypeNames(), "or"))
        ->type_name("NAME");
    command.add_flag("--raw", picture.raw, "The picture is a headerless buffer of samples");
    command
        .add_option("--row-bytes", picture.rowBytes, "Bytes from one row to the next (default: rows without padding)")
        ->needs("--raw");
    command.add_option("--row-bytes2", picture.rowBytes2, "The same for separate planes of chroma or of alpha")
        ->needs("--raw");
    command.parse_complete_callback([given, &picture] { Resolve(*given, picture); });
}

}  // namespace plenar_tool
