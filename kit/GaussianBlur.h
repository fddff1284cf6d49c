// GaussianBlur: Gaussian convolution of 8-bit channels in a time independent of the radius.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace kit {

class BlurTiles;

/// One 8-bit channel of 32-bit pixels: `width` x `height` pixels, rows top first, `rowStride`
/// bytes apart; the channel is bits `shift` .. `shift` + 7 of each little-endian pixel word.
/// With `bytesPerPixel` 1 the source is a plane of single bytes instead (`shift` unused).
/// (`x`, `y`) places the source's top-left pixel in the blurred area; outside the source the
/// area reads transparent black.
struct BlurSource {
    const std::uint8_t* pixels = nullptr;
    std::ptrdiff_t rowStride = 0;
    int width = 0;
    int height = 0;
    int shift = 0;
    int x = 0;
    int y = 0;
    int bytesPerPixel = 4;
};

/// Memory a caller lends a blur for its two large areas, so that a blur into memory the caller
/// already holds costs no more: `strips` of GaussianBlur::stripBytes and `plane` of
/// GaussianBlur::planeBytes, neither overlapping the other nor the source.
struct BlurWorkspace {
    std::uint16_t* strips = nullptr;
    std::uint8_t* plane = nullptr;
    /// When given, only its mixed tiles are blurred and written; the plane's other pixels are
    /// left as they were, for the caller to take as their tile's level.
    const BlurTiles* tiles = nullptr;
};

/// What a blur learnt about the source's other three bytes while reading its channel.
struct BlurSourceFacts {
    /// Every byte of every source pixel equals the blurred channel (a grey, premultiplied white).
    bool othersEqualChannel = false;
    /// Every other byte of every source pixel is zero.
    bool othersZero = false;
};

/// The Gaussian of standard deviation `sigma`: weights exp(-n^2 / (2 sigma^2)) at integer
/// offsets n, normalised to sum 1, applied separably with zero outside the source. It runs as a
/// fourth-order recursive filter (two second-order sections forward and two backward per
/// axis, Deriche's approximation), within 0.1 of an 8-bit step of the exact kernel for every
/// sigma from 0.16 up, in float arithmetic vectorised for the running processor.
class GaussianBlur {
public:
    explicit GaussianBlur(double sigma);

    double sigma() const { return m_sigma; }
    /// True below sigma 0.16, where every side weight is below 1e-8: the blur is the identity.
    bool isIdentity() const { return !(m_sigma >= kIdentityBelow); }

    /// Receives finished rows, top first: `rowCount` rows of the area starting at `firstRow`,
    /// one byte a pixel, `stride` bytes apart.
    using RowSink = std::function<void(int firstRow, int rowCount, const std::uint8_t* rows, std::ptrdiff_t stride)>;

    /// Blurs one channel over an area of `width` x `height` pixels and hands the result to `sink`
    /// in bands of rows. `facts`, when given, is complete before the first band arrives. False,
    /// with no band delivered, when the area is empty or its scratch memory cannot be had.
    /// With a `workspace` the bands come from its plane, rows planeStride(width) bytes apart.
    bool blurChannel(const BlurSource& source, int width, int height, const RowSink& sink,
        BlurSourceFacts* facts = nullptr, const BlurWorkspace* workspace = nullptr) const;

    /// As blurChannel into a workspace, but the result keeps 256 per 8-bit step: 16-bit values
    /// in `plane` (planeBytes x 2 bytes, rows planeStride apart), for callers that interpolate
    /// it further before rounding.
    bool blurChannelWide(const BlurSource& source, int width, int height, std::uint16_t* strips, std::uint16_t* plane,
        const BlurTiles* tiles = nullptr) const;

    /// How far from a change in the source the blur still tells it from none: beyond this many
    /// pixels the recursion's response sums to under a twentieth of an 8-bit step, so a line can
    /// start there from the steady state of a level. 0 for the identity.
    int reach() const;

    /// The sizes of a workspace for a blurred area of `width` x `height` pixels, and the
    /// distance between the rows of its plane.
    static std::size_t stripBytes(int width, int height);
    static std::size_t planeBytes(int width, int height);
    static std::size_t planeStride(int width);

    /// The blur of one line of coverage, exactly (in double precision, rounded to float): pixel
    /// p of 0 .. length-1 holds the length of [from, to) within [p, p + 1), zero outside the
    /// line, and out[i] gets the sum over p of the weight at i - p times that coverage. An
    /// identity blur gives the coverage itself. A box's coverage is the product of two such
    /// lines, and so is its blur.
    void blurSpan(double from, double to, int length, float* out) const;

    /// Sigmas below this blur nothing within 8 bits.
    static constexpr double kIdentityBelow = 0.16;

    /// The recursive filter's coefficients for one axis: for each of two sections, causal
    /// y[n] = n0 x[n] + n1 x[n-1] - d1 y[n-1] - d2 y[n-2], anticausal
    /// z[n] = m1 x[n+1] + m2 x[n+2] - d1 z[n+1] - d2 z[n+2]; the output is the sum of all four.
    struct Coefficients {
        float n0[2], n1[2], m1[2], m2[2], d1[2], d2[2];
    };
    const Coefficients& coefficients() const { return m_coefficients; }

private:
    double m_sigma;
    Coefficients m_coefficients {};
};

} // namespace kit
