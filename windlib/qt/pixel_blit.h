// Filling rectangles and blending icons straight into an image's pixels. A zoomed-out picture has tens of
// thousands of them, each too small to pay for a painter's set-up.
#pragma once

#include <QImage>
#include <QRect>
#include <cstdint>
#include <vector>

// A picture made ready for blending: rows of a multiple of four pixels, premultiplied, and for each channel
// of each pixel what remains of the target, 0 to 65535.
struct Sprite {
    QImage image;  // premultiplied alpha
    int rowPixels = 0;
    std::vector<uint32_t> pixels;
    std::vector<uint16_t> rest;  // four a pixel
    // What of each row isn't transparent, in multiples of four pixels; the end isn't included.
    struct Part {
        int first = 0, end = 0;
    };
    std::vector<Part> parts;

    Sprite() = default;
    explicit Sprite(QImage picture);
};

class PixelBlit {
  public:
    PixelBlit() = default;
    // image has 32 bits a pixel and no transparency, outlives this, and is not reallocated meanwhile. Where
    // its device pixel ratio is no whole number, usable() is false.
    explicit PixelBlit(QImage& image);
    bool usable() const { return bits_ != nullptr; }

    // All rectangles and points are in logical pixels; nothing is drawn outside clip.
    void fill(const QRect& rect, uint32_t colour, const QRect& clip);
    // Moves the pixels of a rectangle, all of which lies in the image before and after.
    void copy(const QRect& rect, int dx, int dy);
    // The sprite has the image's device pixel ratio.
    void blend(int x, int y, const Sprite& sprite, const QRect& clip);

  private:
    QRect toDevice(const QRect& logical) const;

    uint32_t* bits_ = nullptr;
    qsizetype stride_ = 0;  // pixels
    int width_ = 0, height_ = 0, scale_ = 1;
};
