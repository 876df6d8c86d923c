#include "model/preview/Renderer.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <limits>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

#include "model/element/Budget.h"
#include "model/preview/Camera.h"
#include "model/preview/RayScene.h"
#include "model/preview/Shading.h"

namespace ZVSmartModel {

namespace {

constexpr unsigned int stripRows = 8;  // pixels; what a thread draws at once
constexpr int glassLayers = 4;
constexpr Vec lineColour = {0.012F, 0.013F, 0.016F};

// In steps of Budget: about ten times what buildings take.
constexpr double leastSteps = 1e8;
constexpr double stepsPerPixel = 3000;
constexpr double bytesThatDouble = 2 << 20;  // of surfaces

/// How long all threads together may draw.
class Patience {
  public:
    explicit Patience(std::int64_t steps) : left(steps) {}

    /// Charges what this thread has taken since `since`, which becomes now.
    void Charge(std::uint64_t& since) {
        const std::uint64_t now = Budget::ProcessorSteps();
        const auto taken = static_cast<std::int64_t>(now - since);
        since = now;
        if (left.fetch_sub(taken) < taken) throw RenderTooLong();
    }

  private:
    std::atomic<std::int64_t> left;
};

std::int64_t PatienceFor(const Scene& scene, const Picture& picture, bool patient) {
    constexpr double mostSteps = 1e18;
    if (patient) return static_cast<std::int64_t>(mostSteps);
    double bytes = 0;
    for (const SceneSurface& surface : scene.surfaces) {
        bytes += 12 * static_cast<double>(surface.points.size() + surface.triangles.size());
    }
    const double pixels = static_cast<double>(picture.width) * picture.height;
    const double steps = (leastSteps + pixels * stepsPerPixel) * (1 + bytes / bytesThatDouble);
    return static_cast<std::int64_t>(std::min(steps, mostSteps));
}

/// What is seen at one place within a pixel.
struct Sample {
    bool hit = false;
    SurfacePoint surface;
    Vec point;
};

/// How strongly the border between two neighbouring samples is drawn, seen from the first.
float LineStrength(const Sample& a, const Sample& b, float pixelSize) {
    constexpr float outline = 1, crease = 0.75F, seam = 0.5F;
    constexpr float creaseCosine = 0.85F;  // 32 degrees: facets of round bodies stay smooth
    if (!b.hit) return outline;
    // A step: the other point is off this surface, and farther from the eye.
    const float offPlane = std::fabs(Dot(b.point - a.point, a.surface.normal));
    const float step = 12 * pixelSize * a.surface.distance;
    const bool isStep = offPlane > step;
    if (isStep) return a.surface.distance < b.surface.distance ? outline : 0;
    if (Dot(a.surface.normal, b.surface.normal) < creaseCosine) return crease;
    return a.surface.component != b.surface.component ? seam : 0;
}

/// Draws strips of rows; each strip by itself, so that any number of threads gives one picture.
class Painter {
  public:
    Painter(const Camera& camera, const RayScene& rays, const Shading& shading, Patience& patience,
            Picture& picture)
        : camera(camera),
          rays(rays),
          shading(shading),
          patience(patience),
          picture(picture),
          across(picture.width * samplesAcross + 2) {}

    /// Calls `atEachStep` often.
    template <class AtEachStep>
    void Paint(unsigned int firstRow, AtEachStep atEachStep) const {
        const unsigned int rows = std::min(stripRows, picture.height - firstRow);
        const unsigned int sampleRows = rows * samplesAcross + 2;
        std::vector<Sample> samples(std::size_t{sampleRows} * across);
        std::uint64_t since = Budget::ProcessorSteps();
        const auto charge = [&] {
            patience.Charge(since);
            atEachStep();
        };
        for (unsigned int y = 0; y < sampleRows; ++y) {
            for (unsigned int x = 0; x < across; ++x) {
                const Vec direction = DirectionOf(x, y, firstRow);
                samples[std::size_t{y} * across + x] = Look(direction);
                if (x % looksPerCharge == 0) charge();
            }
        }
        for (unsigned int row = 0; row < rows; ++row) {
            for (unsigned int column = 0; column < picture.width; ++column) {
                PaintPixel(samples, firstRow, row, column);
                if (column % pixelsPerCharge == 0) charge();
            }
        }
    }

  private:
    // Asking for the time takes as long as a simple ray.
    static constexpr unsigned int looksPerCharge = 32;
    static constexpr unsigned int pixelsPerCharge = 8;

    /// Samples have a border of one around the picture and around each strip.
    Vec DirectionOf(unsigned int x, unsigned int y, unsigned int firstRow) const {
        const float column = (static_cast<float>(x) - 0.5F) / samplesAcross;
        const float row = (static_cast<float>(y) - 0.5F) / samplesAcross;
        return camera.Direction(column, row + static_cast<float>(firstRow));
    }

    Sample Look(Vec direction) const {
        const auto surface = rays.FirstOpaque(camera.Position(), direction);
        if (!surface) return {};
        return {true, *surface, camera.Position() + direction * surface->distance};
    }

    void PaintPixel(const std::vector<Sample>& samples, unsigned int firstRow, unsigned int row,
                    unsigned int column) const {
        Vec light;
        float cover = 0;
        for (unsigned int i = 0; i < samplesPerPixel; ++i) {
            const unsigned int x = column * samplesAcross + i % samplesAcross + 1;
            const unsigned int y = row * samplesAcross + i / samplesAcross + 1;
            const std::size_t at = std::size_t{y} * across + x;
            Vec seen;
            float share = 0;
            if (samples[at].hit) {
                const Vec lit = shading.Light(samples[at].surface, samples[at].point, i);
                seen = Mix(lit, lineColour, Line(samples, at));
                share = 1;
            }
            LookThrough(DirectionOf(x, y, firstRow), samples[at], seen, share);
            light = light + seen * share;
            cover += share;
        }
        Store(firstRow + row, column, light, cover);
    }

    float Line(const std::vector<Sample>& samples, std::size_t at) const {
        float strength = 0;
        for (const std::size_t other : {at - 1, at + 1, at - across, at + across}) {
            strength = std::max(strength, LineStrength(samples[at], samples[other],
                                                       camera.PixelSize() / samplesAcross));
        }
        return strength;
    }

    /// Lays what is transparent over what is seen behind it, `seen` with `share` of the sample.
    void LookThrough(Vec direction, const Sample& behind, Vec& seen, float& share) const {
        const float end = behind.hit ? behind.surface.distance - rays.Skin()
                                     : std::numeric_limits<float>::infinity();
        Vec front;
        float left = 1;  // of what is behind
        float from = 0;
        for (int layer = 0; layer < glassLayers && from < end; ++layer) {
            const auto glass = rays.FirstTransparent(camera.Position(), direction, from, end);
            if (!glass) break;
            const float hides = shading.GlassShare(*glass);
            front = front + shading.GlassLight(*glass) * (left * hides);
            left *= 1 - hides;
            from = glass->distance + rays.Skin();
        }
        if (left == 1) return;
        const float together = 1 - left + left * share;
        seen = (front + seen * (left * share)) * (1 / together);
        share = together;
    }

    void Store(unsigned int row, unsigned int column, Vec light, float cover) const {
        if (cover <= 0) return;
        std::uint8_t* const pixel =
            picture.pixels.data() + (std::size_t{row} * picture.width + column) * 4;
        const float values[3] = {light.x / cover, light.y / cover, light.z / cover};
        for (int channel = 0; channel < 3; ++channel) {
            pixel[channel] = static_cast<std::uint8_t>(std::lround(Encoded(values[channel]) * 255));
        }
        pixel[3] = static_cast<std::uint8_t>(std::lround(cover / samplesPerPixel * 255));
    }

    const Camera& camera;
    const RayScene& rays;
    const Shading& shading;
    Patience& patience;
    Picture& picture;
    unsigned int across;  ///< samples in a row
};

/// Rethrows what a thread has thrown. `tell` is called by this thread alone.
void PaintAll(const Painter& painter, unsigned int height,
              const std::function<void(double drawn)>& tell) {
    std::atomic<unsigned int> next = 0;
    std::mutex mutex;
    std::exception_ptr failure;
    std::atomic<bool> isEnding = false;
    const auto work = [&](const auto& atEachStep) {
        try {
            for (unsigned int row = next.fetch_add(stripRows); row < height;
                 row = next.fetch_add(stripRows)) {
                painter.Paint(row, atEachStep);
            }
        } catch (...) {
            const std::lock_guard lock(mutex);
            if (!failure) failure = std::current_exception();
            next = height;
            isEnding = true;
        }
    };
    constexpr unsigned int mostThreads = 16;
    const unsigned int threads = std::clamp(std::thread::hardware_concurrency(), 1U, mostThreads);
    {
        std::vector<std::jthread> workers;
        try {
            for (unsigned int i = 1; i < threads; ++i)
                workers.emplace_back([&] {
                    work([&isEnding] {
                        if (isEnding) throw RenderTooLong();  // who failed first is told
                    });
                });
        } catch (const std::system_error&) {
            // Where the system gives no more threads, those that are there do all the work.
        }
        work([&] {
            if (tell) tell(std::min(1.0, static_cast<double>(next) / height));
        });
    }
    if (failure) std::rethrow_exception(failure);
}

}  // namespace

bool CanRender() {
    return true;
}

Picture Render(const Scene& scene, unsigned int width, unsigned int height, bool patient,
               const std::function<void(double drawn)>& tell) {
    const Framing framing = FramingOf(scene);
    if (framing.box.IsEmpty()) return {};
    Picture picture = {width, height, {}};
    Patience patience(PatienceFor(scene, picture, patient));
    std::uint64_t since = Budget::ProcessorSteps();
    const Camera camera(framing, width, height);
    const RayScene rays(scene, camera.Center(), camera.Radius());
    const Shading shading(scene, rays, camera);
    patience.Charge(since);
    picture.pixels.resize(std::size_t{width} * height * 4);
    PaintAll(Painter(camera, rays, shading, patience, picture), height, tell);
    return picture;
}

}  // namespace ZVSmartModel
