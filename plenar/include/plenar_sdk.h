/*
 * PlenarSDK: one picture in memory to a self-describing frame payload, and back.
 *
 * Ten functions, three records and one callback; this header is all there is. It is valid C11 and C++17 and needs
 * nothing but <stdint.h>.
 *
 * Memory. Every buffer belongs to the caller and is used only while the call that names it runs. Encoder and Decoder
 * objects belong to the library: a create call makes them, the destroy call of the same kind releases them. An object
 * keeps for life what the largest frame so far that has coded alpha among its other samples (orders 3, 4, 7, 8, 11, 12)
 * needed for it: up to 64 KB for each thread, or two rows of alpha samples where a row has more than 32 KB. Nothing
 * else grows with a frame.
 *
 * Threads. An object serves one call at a time; which thread makes the call doesn't matter. Calls on different objects
 * may overlap freely. The two size functions and Plenar_GetVersion may be called at any time from any thread. Worker
 * threads touch the caller's buffers only while a frame call runs.
 *
 * Processes. Worker threads are named "plenar-worker", have stacks of 256 KiB, and block all signals but SIGPROF and
 * those that tell of the thread's own doing (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS).
 *   - fork: a child may use and destroy the objects that it inherits. They have no workers there, so that frame calls
 *     do all work on the calling thread. One that another thread was using is still good; a part of its memory is lost.
 *   - dlclose: only after all objects are destroyed, as their workers run the library's code.
 *   - pthread_exit from main: destroy the objects first. While one has workers the process goes on, and no thread is
 *     left that takes a signal like SIGTERM.
 *   - two copies of the library in one process: each is whole by itself; an object belongs to the copy that made it.
 *
 * Errors. Functions that return a code return one of the PLENAR_RESULT_ values. With PLENAR_RESULT_FAILED the reason
 * goes, as English text, to the object's message callback, once and on the calling thread. The object stays usable. A
 * call that fails may already have written to its dst; *bytesWritten and the record of Plenar_ReadMetadata are written
 * on success only.
 *
 * Untrusted input. Payload bytes, samples and every field of the picture's records may come from anywhere: no value of
 * them makes a call read or write outside the buffers as their stated sizes delimit them, hang, leak, end the process,
 * or hand out bytes of earlier frames. The pointers and sizes themselves are trusted: a size must not exceed the memory
 * behind its pointer. Source and destination must not overlap, and nobody else may change them, or a record, while the
 * call runs. numThreads is trusted too.
 *
 * Versions. Records don't grow, and their fields and the values of the constants keep their meaning, within a major
 * version. Values may be added.
 *
 * All numbers in records are in the machine's byte order, sizes are in bytes, and rows run from top to bottom.
 */
#ifndef PLENAR_SDK_H
#define PLENAR_SDK_H

#include <stdint.h>

/* Hosts need no macro. PLENAR_BUILDING_LIBRARY is the library's own, PLENAR_STATIC is for links without the shared
 * library. */
#if defined(PLENAR_STATIC)
#define PLENAR_API
#elif defined(_WIN32)
#if defined(PLENAR_BUILDING_LIBRARY)
#define PLENAR_API __declspec(dllexport)
#else
#define PLENAR_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define PLENAR_API __attribute__((visibility("default")))
#else
#define PLENAR_API
#endif

#if defined(__cplusplus)
#define PLENAR_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define PLENAR_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

#if defined(__cplusplus)
extern "C" {
#endif

/* What the functions that return a code return. */
enum {
    PLENAR_RESULT_OK = 0,             /* done */
    PLENAR_RESULT_FAILED = 1,         /* refused or failed; the message callback was told why */
    PLENAR_RESULT_NULL_POINTER = 2,   /* a required pointer is null; nothing was done */
    PLENAR_RESULT_BAD_RECORD_SIZE = 3 /* the size field of a record is wrong; nothing was done */
};

/*
 * The arrangement of samples in the caller's picture (UncompressedParams::colorComponentOrder). The letters are listed
 * in memory order. Conversion moves samples by position: it doesn't interpret what a component means.
 *
 * 4:2:2 orders (1, 2, 11, 15, 16) share one pair of chroma samples between two pixels; an encode needs an even width.
 * A decode takes any: see Plenar_DecodeFrame for what becomes of the last pixel of an odd width.
 * 4:2:0 orders (10, 13) hold chroma planes of half the width and half the height; an encode needs both to be even.
 */
enum {
    PLENAR_ORDER_YCBYCR = 1,             /* Y Cb Y Cr for each two pixels ("YUY2") */
    PLENAR_ORDER_CBYCRY = 2,             /* Cb Y Cr Y for each two pixels ("UYVY") */
    PLENAR_ORDER_ARGB = 3,               /* A R G B */
    PLENAR_ORDER_BGRA = 4,               /* B G R A */
    PLENAR_ORDER_RGB = 5,                /* R G B */
    PLENAR_ORDER_BGR = 6,                /* B G R */
    PLENAR_ORDER_RGBA = 7,               /* R G B A */
    PLENAR_ORDER_ABGR = 8,               /* A B G R */
    PLENAR_ORDER_CBYCR = 9,              /* three samples a pixel, stored in this very order */
    PLENAR_ORDER_YCBCR420_PLANAR = 10,   /* three planes one after the other: Y, Cb, Cr */
    PLENAR_ORDER_CBYACRYA = 11,          /* Cb Y A Cr Y A for each two pixels */
    PLENAR_ORDER_YCBCRA = 12,            /* Y Cb Cr A; stored as the three samples of order 9 and an alpha plane */
    PLENAR_ORDER_YCBCRA420_PLANAR = 13,  /* four planes: Y, Cb, Cr, A; A has the size and the stride of Y */
    PLENAR_ORDER_ALPHA_ONLY = 14,        /* one plane of alpha */
    PLENAR_ORDER_YCBYCR_PLUS_ALPHA = 15, /* a YCbYCr picture, then an alpha plane of width x height samples */
    PLENAR_ORDER_CBYCRY_PLUS_ALPHA = 16  /* a CbYCrY picture, then an alpha plane of width x height samples */
};

/* The type of a sample in the caller's picture (UncompressedParams::componentType). Words are little-endian. */
enum {
    PLENAR_TYPE_UINT8 = 1,      /* 8 bits in a byte */
    PLENAR_TYPE_UINT16 = 2,     /* 16 bits in a word */
    PLENAR_TYPE_UINT10 = 3,     /* 10 bits in the top of a word; the 6 bits below are dropped, and zero on decode */
    PLENAR_TYPE_UINT12 = 4,     /* 12 bits in the top of a word; the 4 bits below are dropped, and zero on decode */
    PLENAR_TYPE_PACKED10 = 5,   /* three 10-bit samples in 32 bits, 6 pixels in 16 bytes ("v210"); CbYCrY only. Rows
                                   without padding are whole groups of 16 bytes */
    PLENAR_TYPE_HALF16 = 6,     /* 16-bit floating point, carried bit for bit */
    PLENAR_TYPE_FLOAT32 = 7,    /* 32-bit floating point, carried bit for bit */
    PLENAR_TYPE_FIXED2P14 = 214 /* signed 16-bit fixed point, value / 16384; decodes to itself or to Float32 */
};

#pragma pack(push, 1)

/*
 * A picture in the caller's memory. 36 bytes, no padding between fields.
 *
 * Not every pair of order and type is supported: Plenar_GetCompressedBufSize answers 0 for one that isn't. Orders with
 * alpha keep their alpha only at Uint8 and Uint16. With any other type an encode drops the alpha samples, and a decode
 * of such a frame has to ask for the order without alpha.
 *
 * Straight (unassociated) and premultiplied (associated) alpha are not told apart: nothing multiplies or divides by
 * alpha, and a payload doesn't say which of the two it holds. Hosts that exchange frames have to agree on it.
 */
typedef struct UncompressedParams {
    uint64_t size;                /* must be 36 */
    uint32_t colorComponentOrder; /* one of PLENAR_ORDER_ */
    uint32_t componentType;       /* one of PLENAR_TYPE_ */
    uint32_t width;               /* pixels */
    uint32_t height;              /* rows; 0 is legal and gives empty planes */
    uint32_t rowBytes;            /* from one row to the next of the picture (of the Y plane, and of the alpha plane of
                                     orders 13 and 14), in bytes; 0 means rows without padding */
    uint32_t frameLayout;         /* how fields share the rows of the frame; no conversion depends on it. An
                                     encode stores its low byte with every plane, whatever it is, and refuses nothing:
                                     give 0 or 1 only, as payloads with other values are refused by Plenar_ReadMetadata
                                     and Plenar_DecodeFrame. A decode doesn't compare this field with the payload's */
    uint32_t rowBytes2;           /* the same as rowBytes for the chroma planes of orders 10 and 13 and the alpha plane
                                     of orders 15 and 16; not read for other orders */
} UncompressedParams;

/* What an encode is to do with the alpha plane. 10 bytes, no padding between fields. */
typedef struct CompressedParams {
    uint64_t size;          /* must be 10 */
    uint8_t alphaRle;       /* not 0: code the alpha plane, without loss, as runs; without effect on orders without
                               alpha. Orders with alpha need Uint8 or Uint16: with other types, which keep no alpha,
                               Plenar_GetCompressedBufSize answers as if this were 0, and Plenar_EncodeFrame refuses */
    uint8_t alphaBandLimit; /* with alphaRle: the most bands of rows that the plane is cut into, each coded by itself
                               and so in parallel; 0 means 16. Bands must stay below 2^28 samples at 8 bits and 2^24
                               samples at 16 bits: a longer run of equal samples doesn't fit the code, is not detected,
                               and gives a payload that doesn't decode. The default of 16 bands is safe for any picture
                               below 2^28 samples. */
} CompressedParams;

/*
 * Takes a message: English text, zero-terminated, valid only during the call. It runs on the thread that made the
 * exported call, at most once a call. It must not call the library with the same object, and must not throw.
 */
typedef void (*PlenarMessageCallback)(const char* message, void* userData);

/*
 * How an object is made. 28 bytes, no padding between fields. Copied by the create call.
 *
 * A numThreads of 0 counts the processors of the machine. A host that may use fewer says how many: by its affinity
 * sched_getaffinity(0, sizeof set, &set), numThreads = CPU_COUNT(&set); in a container with a quota the first number of
 * its cpu.max by the second.
 */
typedef struct CreateParams {
    uint64_t size;                         /* must be 28 */
    uint32_t numThreads;                   /* worker threads of the object; 0 means one for each logical processor, and
                                              1 means none: all work is done on the calling thread. Results don't depend
                                              on it. Any other number is taken as it stands. */
    void* userData;                        /* handed to messageCallback as it is */
    PlenarMessageCallback messageCallback; /* may be null: then messages are dropped */
} CreateParams;

#pragma pack(pop)

PLENAR_STATIC_ASSERT(sizeof(UncompressedParams) == 36, "UncompressedParams must have 36 bytes");
PLENAR_STATIC_ASSERT(sizeof(CompressedParams) == 10, "CompressedParams must have 10 bytes");
PLENAR_STATIC_ASSERT(sizeof(CreateParams) == 28, "CreateParams must have 28 bytes");

typedef struct Encoder Encoder;
typedef struct Decoder Decoder;

/*
 * Make an object and start its worker threads. A null params stands for a record with all fields 0 but size: as many
 * threads as processors, no callback.
 *
 * Return PLENAR_RESULT_OK and store the object, or PLENAR_RESULT_NULL_POINTER (encoder or decoder is null), or
 * PLENAR_RESULT_BAD_RECORD_SIZE. Lack of memory or of threads leaves the call as a C++ exception (std::bad_alloc,
 * std::system_error) with nothing left behind. It ends a C host, unless one function in C++ makes the call for it:
 *
 *     extern "C" uint32_t TryCreate(const CreateParams* params, Encoder** encoder) {
 *         try { return Plenar_CreateEncoder(params, encoder); } catch (...) { return PLENAR_RESULT_FAILED; }
 *     }
 *
 * That works as well where the host or the library is linked with -static-libgcc. A library that is linked with
 * -static-libstdc++ can't throw into its host: the failure ends the process.
 */
PLENAR_API uint32_t Plenar_CreateEncoder(const CreateParams* params, Encoder** encoder);
PLENAR_API uint32_t Plenar_CreateDecoder(const CreateParams* params, Decoder** decoder);

/* Stop and join the object's threads and release it. Null is ignored. No other call on the object may be running. */
PLENAR_API void Plenar_DestroyEncoder(Encoder* encoder);
PLENAR_API void Plenar_DestroyDecoder(Decoder* decoder);

/*
 * Encodes one picture.
 *
 * src, srcSize
 *     the picture; at least Plenar_GetUncompressedBufSize(params) bytes
 * dst, dstSize
 *     takes the payload; at least Plenar_GetCompressedBufSize(params, compressedParams) bytes, also where the coded
 *     payload turns out smaller
 * bytesWritten
 *     may be null; takes the payload's size, on success only
 *
 * Returns a PLENAR_RESULT_ code. Frames don't depend on one another: all parameters may change from call to call. Any
 * field values and any sample values are safe.
 */
PLENAR_API uint32_t Plenar_EncodeFrame(Encoder* encoder, const UncompressedParams* params,
                                       const CompressedParams* compressedParams, const void* src, uint32_t srcSize,
                                       void* dst, uint32_t dstSize, uint32_t* bytesWritten);

/*
 * Decodes a payload into a picture of the arrangement that params asks for: the one that Plenar_ReadMetadata reports,
 * or another that holds the same planes (orders of the same family, with or without alpha, alpha alone; Packed10 for
 * Uint10 in CbYCrY; Float32 for Fixed2p14 in orders without alpha). Width and height must be those of the payload.
 *
 * src, srcSize
 *     the payload. Safe for untrusted bytes: what is damaged is refused, or decodes to some picture. Whatever numbers
 *     it holds, the time goes with srcSize and dstSize, and the memory with the picture's alpha rows
 * dst, dstSize
 *     takes the picture; at least Plenar_GetUncompressedBufSize(params) bytes. Bytes between the rows of a picture with
 *     padding stay as they were; only those between the rows of a coded alpha plane that is decoded into a plane of its
 *     own may change
 * bytesWritten
 *     may be null; takes the picture's size, on success only
 *
 * Two kinds of rows need care:
 *
 * Packed10 with a width of 4 or 5 more than a multiple of 6. The second word of a row's last group is added to the one
 * that stands in dst: clear dst first. The words of a last group behind its last pair of pixels are not written.
 *
 * Odd widths in 4:2:2. Encodes refuse them, but payloads of other makers may have them: the last pixel of such a row
 * has both its chroma samples. CbYCrY, CbYACrYA and CbYCrYPlusAlpha decode them whole. YCbYCr and YCbYCrPlusAlpha rows
 * have one more luma sample than the plane, the last but one of the row: it is 0, or what stood at the end of the row
 * in dst where Fixed2p14 becomes Float32. In these two orders at Uint10 and Uint12, and in Packed10, samples come out
 * wrong, as their low bits are looked for in the wrong place, and Packed10 leaves the last pixel out. Decode such
 * payloads into CbYCrY with Uint10 or Uint12.
 *
 * Returns a PLENAR_RESULT_ code.
 */
PLENAR_API uint32_t Plenar_DecodeFrame(Decoder* decoder, const UncompressedParams* params, const void* src,
                                       uint32_t srcSize, void* dst, uint32_t dstSize, uint32_t* bytesWritten);

/*
 * Reads what a payload holds, without touching its plane data. params->size must be 36 on entry; on success the whole
 * record is overwritten, with rowBytes and rowBytes2 0. The arrangement reported is one of the orders 2, 3, 5, 9, 10,
 * 11, 12, 13 and 14, since a payload doesn't tell which order it was encoded from.
 *
 * Safe for untrusted bytes; the time goes with the number of boxes, and so with srcSize at worst. The width and height
 * are the payload's own claim: check them before using them as sizes of allocations. Returns a PLENAR_RESULT_ code.
 */
PLENAR_API uint32_t Plenar_ReadMetadata(Decoder* decoder, const void* src, uint32_t srcSize,
                                        UncompressedParams* params);

/*
 * The bytes that Plenar_EncodeFrame needs in dst: the payload's size, or an upper bound when the alpha plane is coded.
 * 0 when a pointer is null, a record's size field is wrong, or the pair of order and type is not supported. A payload
 * has at most 2^32 - 1 bytes: for pictures beyond that the result is cut to 32 bits, and the encode is refused.
 */
PLENAR_API uint32_t Plenar_GetCompressedBufSize(const UncompressedParams* params,
                                                const CompressedParams* compressedParams);

/*
 * The bytes of the caller's picture, padding between rows included. 0 when params is null or its size field is wrong.
 * Unsupported pairs of order and type get some number too. The result is cut to 32 bits: for a picture beyond that it
 * is too small to allocate by, and encode and decode, which compare the true size, refuse every buffer.
 */
PLENAR_API uint32_t Plenar_GetUncompressedBufSize(const UncompressedParams* params);

/* The library's version, 2.5.2.39 with stage 'r'. Each pointer may be null. */
PLENAR_API void Plenar_GetVersion(uint32_t* major, uint32_t* minor, uint32_t* patch, uint32_t* build, char* stage);

#if defined(__cplusplus)
} /* extern "C" */

/* The constants under their own names, for C++ hosts. */
namespace plenar {

enum Result : uint32_t {
    ResultOk = PLENAR_RESULT_OK,
    ResultFailed = PLENAR_RESULT_FAILED,
    ResultNullPointer = PLENAR_RESULT_NULL_POINTER,
    ResultBadRecordSize = PLENAR_RESULT_BAD_RECORD_SIZE
};

enum ColorComponentOrder : uint32_t {
    YCbYCr = PLENAR_ORDER_YCBYCR,
    CbYCrY = PLENAR_ORDER_CBYCRY,
    ARGB = PLENAR_ORDER_ARGB,
    BGRA = PLENAR_ORDER_BGRA,
    RGB = PLENAR_ORDER_RGB,
    BGR = PLENAR_ORDER_BGR,
    RGBA = PLENAR_ORDER_RGBA,
    ABGR = PLENAR_ORDER_ABGR,
    CbYCr = PLENAR_ORDER_CBYCR,
    YCbCr420Planar = PLENAR_ORDER_YCBCR420_PLANAR,
    CbYACrYA = PLENAR_ORDER_CBYACRYA,
    YCbCrA = PLENAR_ORDER_YCBCRA,
    YCbCrA420Planar = PLENAR_ORDER_YCBCRA420_PLANAR,
    AlphaOnly = PLENAR_ORDER_ALPHA_ONLY,
    YCbYCrPlusAlpha = PLENAR_ORDER_YCBYCR_PLUS_ALPHA,
    CbYCrYPlusAlpha = PLENAR_ORDER_CBYCRY_PLUS_ALPHA
};

enum ComponentType : uint32_t {
    Uint8 = PLENAR_TYPE_UINT8,
    Uint16 = PLENAR_TYPE_UINT16,
    Uint10 = PLENAR_TYPE_UINT10,
    Uint12 = PLENAR_TYPE_UINT12,
    Packed10 = PLENAR_TYPE_PACKED10,
    Half16 = PLENAR_TYPE_HALF16,
    Float32 = PLENAR_TYPE_FLOAT32,
    Fixed2p14 = PLENAR_TYPE_FIXED2P14
};

} /* namespace plenar */
#endif

#endif /* PLENAR_SDK_H */
