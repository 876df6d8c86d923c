#include "model/preview/Renderer.h"

#include <atomic>
#include <chrono>
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
#include "model/preview/EmbreeFunctions.h"
#include "model/preview/Looker.h"
#include "model/preview/RayScene.h"
#include "model/preview/Shading.h"
#include "model/preview/Strip.h"

namespace ZVSmartModel {

namespace {

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

/// What is drawn and by which rules; borrowed.
struct View {
    const Camera& camera;
    const RayScene& rays;
    const Shading& shading;
    Patience& patience;
    Picture& picture;
};

/// Draws strips until there are none left. Calls `atEachStep` often.
void PaintStrips(const View& view, std::atomic<unsigned int>& next,
                 const std::function<void()>& atEachStep) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds pause(1);  // asking for processor time takes its time
    std::uint64_t since = Budget::ProcessorSteps();
    Clock::time_point asked = Clock::now();
    const std::function<void()> charge = [&] {
        const Clock::time_point now = Clock::now();
        if (now - asked < pause) return;
        asked = now;
        view.patience.Charge(since);
        atEachStep();
    };
    Looker looker(view.camera, view.rays, view.shading, charge);
    Strip strip(view.camera, view.shading, looker, view.picture);
    const unsigned int height = view.picture.height;
    for (unsigned int row = next.fetch_add(Strip::height); row < height;
         row = next.fetch_add(Strip::height)) {
        strip.Paint(row);
    }
}

/// Any number of threads draws one picture. Rethrows what a thread has thrown. `tell` is called by
/// this thread alone.
void PaintAll(const View& view, const std::function<void(double drawn)>& tell,
              unsigned int threads) {
    const unsigned int height = view.picture.height;
    std::atomic<unsigned int> next = 0;
    std::mutex mutex;
    std::exception_ptr failure;
    std::atomic<bool> isEnding = false;
    const auto work = [&](const std::function<void()>& atEachStep) {
        try {
            PaintStrips(view, next, atEachStep);
        } catch (...) {
            const std::lock_guard lock(mutex);
            if (!failure) failure = std::current_exception();
            next = height;
            isEnding = true;
        }
    };
    constexpr unsigned int mostThreads = 16;
    if (threads == 0) threads = std::thread::hardware_concurrency();
    threads = std::clamp(threads, 1U, mostThreads);
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
    return embree.IsThere();
}

Picture Render(const Scene& scene, unsigned int width, unsigned int height, bool patient,
               const std::function<void(double drawn)>& tell, unsigned int threads) {
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
    PaintAll({camera, rays, shading, patience, picture}, tell, threads);
    return picture;
}

}  // namespace ZVSmartModel
