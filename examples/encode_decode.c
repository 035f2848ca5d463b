/* Encodes a picture with alpha, decodes it again and compares the two. */
#include <plenar_sdk.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void print_message(const char* message, void* user_data) {
    fprintf(user_data, "PlenarSDK: %s\n", message);
}

int main(void) {
    const UncompressedParams picture = {sizeof picture, PLENAR_ORDER_RGBA, PLENAR_TYPE_UINT8, 640, 360, 0, 0, 0};
    const CompressedParams options = {.size = sizeof options, .alphaRle = 1};
    const CreateParams create = {sizeof create, 2 /* threads */, stderr, print_message};
    const uint32_t size = Plenar_GetUncompressedBufSize(&picture);
    const uint32_t limit = Plenar_GetCompressedBufSize(&picture, &options);
    unsigned char *source = malloc(size), *payload = malloc(limit), *decoded = malloc(size);
    Encoder* encoder = NULL;
    Decoder* decoder = NULL;
    uint32_t written = 0;

    for (uint32_t i = 0; source && i < size; i++)
        source[i] = (unsigned char)(i % 251);
    const int good = source && payload && decoded && Plenar_CreateEncoder(&create, &encoder) == PLENAR_RESULT_OK &&
                     Plenar_CreateDecoder(&create, &decoder) == PLENAR_RESULT_OK &&
                     Plenar_EncodeFrame(encoder, &picture, &options, source, size, payload, limit, &written) == 0 &&
                     Plenar_DecodeFrame(decoder, &picture, payload, written, decoded, size, NULL) == 0 &&
                     memcmp(source, decoded, size) == 0;
    printf("picture %u bytes, payload %u bytes: %s\n", size, written, good ? "equal" : "failed");

    Plenar_DestroyDecoder(decoder);
    Plenar_DestroyEncoder(encoder);
    free(decoded);
    free(payload);
    free(source);
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
