#include "picture_message.h"

namespace plenar_tool {

nlohmann::json PictureDescription(const Picture& picture) {
    return {{"width", picture.width},         {"height", picture.height},      {"channels", picture.channels},
            {"type", picture.type},           {"alpha", picture.notes.alpha},  {"metadata", picture.notes.metadata},
            {"stated", picture.notes.stated}, {"losses", picture.notes.losses}};
}

Picture DescribedPicture(const nlohmann::json& description) {
    Picture picture;
    description.at("width").get_to(picture.width);
    description.at("height").get_to(picture.height);
    description.at("channels").get_to(picture.channels);
    description.at("type").get_to(picture.type);
    description.at("alpha").get_to(picture.notes.alpha);
    description.at("metadata").get_to(picture.notes.metadata);
    description.at("stated").get_to(picture.notes.stated);
    description.at("losses").get_to(picture.notes.losses);
    return picture;
}

}  // namespace plenar_tool
