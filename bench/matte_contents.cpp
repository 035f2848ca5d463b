#include "matte_contents.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>

namespace plenar_bench {

namespace {

struct Point {
    double x;
    double y;
};

// Uniform numbers that don't differ between standard libraries, as those of std::uniform_real_distribution may.
class Chance {
public:
    explicit Chance(uint32_t seed) : engine_(seed) {}
    uint32_t Below(uint32_t limit) { return Next() % limit; }
    double Between(double low, double high) { return low + (high - low) * (Next() / 4294967296.0); }

private:
    uint32_t Next() { return static_cast<uint32_t>(engine_()); }

    std::mt19937 engine_;
};

double Distance(Point a, Point b) {
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

double DistanceToSegment(Point p, Point a, Point b) {
    const double length2 = (b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y);
    const double along = length2 == 0 ? 0 : ((p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y)) / length2;
    const double t = std::clamp(along, 0.0, 1.0);
    return Distance(p, {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
}

// How much of a pixel is covered whose centre is so far inside an edge, in pixels.
double Coverage(double inside) {
    return std::clamp(inside + 0.5, 0.0, 1.0);
}

// Levels from 0 to 1.
class Canvas {
public:
    explicit Canvas(PictureSize size) : size_(size), levels_(size_t{size.width} * size.height) {}

    float& At(uint32_t x, uint32_t y) { return levels_[size_t{y} * size_.width + x]; }
    uint32_t Width() const { return size_.width; }
    uint32_t Height() const { return size_.height; }
    const std::vector<float>& Levels() const { return levels_; }

    template <class LevelOf>
    void ForEach(const LevelOf& levelOf) {
        for (uint32_t y = 0; y < size_.height; ++y) {
            for (uint32_t x = 0; x < size_.width; ++x) {
                At(x, y) = static_cast<float>(levelOf(x, y));
            }
        }
    }

    // The higher level stays, for the pixels between two corners and `margin` around them.
    template <class LevelOf>
    void Lighten(Point a, Point b, double margin, const LevelOf& levelOf) {
        const uint32_t right = Clip(std::max(a.x, b.x) + margin + 1, size_.width);
        const uint32_t bottom = Clip(std::max(a.y, b.y) + margin + 1, size_.height);
        for (uint32_t y = Clip(std::min(a.y, b.y) - margin, size_.height); y < bottom; ++y) {
            for (uint32_t x = Clip(std::min(a.x, b.x) - margin, size_.width); x < right; ++x) {
                const Point centre = {x + 0.5, y + 0.5};
                At(x, y) = std::max(At(x, y), static_cast<float>(levelOf(centre)));
            }
        }
    }

    void Disc(Point centre, double radius, double softness) {
        Lighten(centre, centre, radius + softness, [&](Point p) {
            const double inside = radius - Distance(p, centre);
            const double t = std::clamp(inside / softness + 0.5, 0.0, 1.0);
            return softness <= 1 ? Coverage(inside) : t * t * (3 - 2 * t);
        });
    }

    void Stroke(Point a, Point b, double width, double opacity) {
        Lighten(a, b, width, [&](Point p) { return opacity * Coverage(width / 2 - DistanceToSegment(p, a, b)); });
    }

private:
    static uint32_t Clip(double value, uint32_t limit) {
        return static_cast<uint32_t>(std::clamp(value, 0.0, static_cast<double>(limit)));
    }

    PictureSize size_;
    std::vector<float> levels_;
};

// Calls draw(corner, chance) for the cells of a grid.
template <class Draw>
void ForEachCell(const Canvas& canvas, uint32_t width, uint32_t height, const Draw& draw) {
    for (uint32_t y = 0; y < canvas.Height(); y += height) {
        for (uint32_t x = 0; x < canvas.Width(); x += width) {
            Chance chance(y * 8191 + x + 1);
            draw(Point{static_cast<double>(x), static_cast<double>(y)}, chance);
        }
    }
}

void DrawShapes(Canvas& canvas) {
    ForEachCell(canvas, 480, 360, [&](Point corner, Chance& chance) {
        const Point centre = {corner.x + chance.Between(160, 320), corner.y + chance.Between(120, 240)};
        canvas.Disc(centre, chance.Between(60, 150), 1);
        canvas.Stroke({corner.x + chance.Between(0, 480), corner.y},
                      {corner.x + chance.Between(0, 480), corner.y + 340}, chance.Between(10, 50), 1);
    });
}

void DrawSoftEdges(Canvas& canvas, double softness) {
    ForEachCell(canvas, 480, 360, [&](Point corner, Chance& chance) {
        const Point centre = {corner.x + chance.Between(160, 320), corner.y + chance.Between(120, 240)};
        canvas.Disc(centre, chance.Between(80, 130), softness);
    });
}

void DrawGlyphs(Canvas& canvas) {
    ForEachCell(canvas, 20, 36, [&](Point corner, Chance& chance) {
        if (chance.Below(6) == 0) {
            return;  // the space between words
        }
        const auto knot = [&] { return Point{corner.x + 3 + 7 * chance.Below(3), corner.y + 5 + 8 * chance.Below(4)}; };
        const uint32_t strokes = 2 + chance.Below(3);
        for (uint32_t i = 0; i < strokes; ++i) {
            const Point from = knot();
            canvas.Stroke(from, knot(), 2.6, 1);
        }
    });
}

void DrawHair(Canvas& canvas) {
    constexpr int kStrands = 90;
    constexpr int kJoints = 10;
    ForEachCell(canvas, 640, 540, [&](Point corner, Chance& chance) {
        const Point centre = {corner.x + 320, corner.y + 300};
        canvas.Disc(centre, 110, 1);
        for (int i = 0; i < kStrands; ++i) {
            Point at = {centre.x + chance.Between(-100, 100), centre.y + chance.Between(-100, 60)};
            Point step = {chance.Between(-24, 24), chance.Between(-26, 10)};
            const Point bend = {chance.Between(-3, 3), chance.Between(0, 4)};
            const double width = chance.Between(0.6, 1.6);
            const double opacity = chance.Between(0.3, 1);
            for (int joint = 0; joint < kJoints; ++joint) {
                const Point next = {at.x + step.x, at.y + step.y};
                canvas.Stroke(at, next, width, opacity);
                at = next;
                step = {step.x + bend.x, step.y + bend.y};
            }
        }
    });
}

void DrawGrain(Canvas& canvas) {
    DrawSoftEdges(canvas, 30);
    Chance chance(77);
    canvas.ForEach([&](uint32_t x, uint32_t y) {
        const float level = canvas.At(x, y);
        const double noise = chance.Between(-0.03, 0.03);
        return level > 0 && level < 1 ? std::clamp(level + noise, 0.0, 1.0) : static_cast<double>(level);
    });
}

// Mirrored figures of 16 rows of blocks, each block 3 pixels wide; some blocks at the rim are half clear.
void DrawSprites(Canvas& canvas) {
    constexpr uint32_t kBlocks = 16;
    constexpr uint32_t kBlockPixels = 3;
    ForEachCell(canvas, 64, 64, [&](Point corner, Chance& chance) {
        uint32_t reach = 2 + chance.Below(4);
        for (uint32_t row = 0; row < kBlocks; ++row) {
            reach = std::clamp(reach + chance.Below(3), 2U, kBlocks / 2 + 1) - 1;
            const auto fill = [&](uint32_t halfWidth, double level) {
                const double middle = corner.x + 32;
                const double top = corner.y + 8 + row * kBlockPixels;
                const double half = halfWidth * kBlockPixels;
                canvas.Lighten({middle - half, top}, {middle + half - 1, top + kBlockPixels - 1}, 0,
                               [&](Point) { return level; });
            };
            fill(reach, chance.Below(4) == 0 ? 0.5 : 1);
            fill(reach - 1, 1);
        }
    });
}

Canvas DrawLevels(Matte matte, PictureSize size) {
    Canvas canvas(size);
    Chance chance(5);
    switch (matte) {
        case Matte::Flat:
            canvas.ForEach([](uint32_t, uint32_t) { return 1; });
            break;
        case Matte::VerticalGradient:
            canvas.ForEach([&](uint32_t, uint32_t y) { return y / (size.height - 1.0); });
            break;
        case Matte::HorizontalGradient:
            canvas.ForEach([&](uint32_t x, uint32_t) { return x / (size.width - 1.0); });
            break;
        case Matte::SteepGradient:
            canvas.ForEach([](uint32_t x, uint32_t) { return x % 256 / 255.0; });
            break;
        case Matte::Shapes:
            DrawShapes(canvas);
            break;
        case Matte::SoftEdges:
            DrawSoftEdges(canvas, 60);
            break;
        case Matte::Glyphs:
            DrawGlyphs(canvas);
            break;
        case Matte::Hair:
            DrawHair(canvas);
            break;
        case Matte::Grain:
            DrawGrain(canvas);
            break;
        case Matte::Sprites:
            DrawSprites(canvas);
            break;
        case Matte::Noise:
            canvas.ForEach([&](uint32_t, uint32_t) { return chance.Between(0, 1); });
            break;
    }
    return canvas;
}

std::vector<uint8_t> DrawMatte(Matte matte, PictureSize size, uint32_t bits) {
    const Canvas canvas = DrawLevels(matte, size);
    const double top = bits == 8 ? 255 : 65535;
    std::vector<uint8_t> samples;
    samples.reserve(canvas.Levels().size() * bits / 8);
    for (const float level : canvas.Levels()) {
        const auto sample = static_cast<uint32_t>(std::lround(level * top));
        samples.push_back(static_cast<uint8_t>(sample));
        if (bits == 16) {
            samples.push_back(static_cast<uint8_t>(sample >> 8));
        }
    }
    return samples;
}

}  // namespace

std::string NameOf(Matte matte) {
    static constexpr const char* kNames[] = {"flat",   "vertical", "horizontal", "steep",   "shapes", "soft",
                                             "glyphs", "hair",     "grain",      "sprites", "noise"};
    return kNames[static_cast<size_t>(matte)];
}

const std::vector<uint8_t>& MatteSamples(Matte matte, PictureSize size, uint32_t bits) {
    using Key = std::tuple<Matte, uint32_t, uint32_t, uint32_t>;
    static Key drawnKey;
    static std::vector<uint8_t> drawn;
    const Key key = {matte, size.width, size.height, bits};
    if (drawn.empty() || drawnKey != key) {
        drawn = DrawMatte(matte, size, bits);
        drawnKey = key;
    }
    return drawn;
}

}  // namespace plenar_bench
