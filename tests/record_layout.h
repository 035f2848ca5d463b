/* Where each field of the records lies, for C and C++. */
#pragma once

#define FIELD(record, field, offset, width)                                                          \
    PLENAR_STATIC_ASSERT(offsetof(record, field) == (offset), #record " " #field " lies elsewhere"); \
    PLENAR_STATIC_ASSERT(sizeof(((record*)0)->field) == (width), #record " " #field " has another width")

FIELD(UncompressedParams, size, 0, 8);
FIELD(UncompressedParams, colorComponentOrder, 8, 4);
FIELD(UncompressedParams, componentType, 12, 4);
FIELD(UncompressedParams, width, 16, 4);
FIELD(UncompressedParams, height, 20, 4);
FIELD(UncompressedParams, rowBytes, 24, 4);
FIELD(UncompressedParams, frameLayout, 28, 4);
FIELD(UncompressedParams, rowBytes2, 32, 4);
FIELD(CompressedParams, size, 0, 8);
FIELD(CompressedParams, alphaRle, 8, 1);
FIELD(CompressedParams, alphaBandLimit, 9, 1);
FIELD(CreateParams, size, 0, 8);
FIELD(CreateParams, numThreads, 8, 4);
FIELD(CreateParams, userData, 12, 8);
FIELD(CreateParams, messageCallback, 20, 8);
