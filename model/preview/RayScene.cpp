#include "model/preview/RayScene.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "model/preview/EmbreeFunctions.h"
#include "model/preview/Renderer.h"

namespace ZVSmartModel {

namespace {

constexpr std::uint8_t leastOpaqueAlpha = 230;
const RTCSceneFlags sceneFlags = RTC_SCENE_FLAG_ROBUST | RTC_SCENE_FLAG_CONTEXT_FILTER_FUNCTION;

struct ReleaseDevice {
    void operator()(RTCDevice device) const { rtcReleaseDevice(device); }
};
struct ReleaseScene {
    void operator()(RTCScene scene) const { rtcReleaseScene(scene); }
};
using Device = std::unique_ptr<RTCDeviceTy, ReleaseDevice>;
using TreeScene = std::unique_ptr<RTCSceneTy, ReleaseScene>;

/// A null device tells why none could be made.
void Check(const Device& device) {
    const RTCError error = rtcGetDeviceError(device.get());
    if (error == RTC_ERROR_OUT_OF_MEMORY) throw std::bad_alloc();
    if (error != RTC_ERROR_NONE) {
        throw RenderFailed("the ray tracer failed: " + std::to_string(error));
    }
}

/// One thread builds, with the vector units that every processor has: the trees, and with them
/// the rounding of what is met, are the same everywhere.
Device NewDevice() {
#if defined(__x86_64__)
    Device device(rtcNewDevice("threads=1,set_affinity=0,isa=sse2"));
#else
    Device device(rtcNewDevice("threads=1,set_affinity=0"));
#endif
    if (device) return device;
    Check(device);
    throw RenderFailed("the ray tracer does not start");
}

/// Of coinciding surfaces the lowest numbers win.
bool Precedes(const RTCHit& a, const RTCHit& b) {
    if (a.instID[0] != b.instID[0]) return a.instID[0] < b.instID[0];
    if (a.geomID != b.geomID) return a.geomID < b.geomID;
    return a.primID < b.primID;
}

ScenePlacement Relative(const ScenePlacement& placement, const std::array<double, 3>& center,
                        double radius) {
    ScenePlacement relative = placement;
    for (std::size_t i = 0; i < 12; ++i) {
        const double shift = i % 4 == 3 ? center[i / 4] : 0;
        relative.toModel[i] = (relative.toModel[i] - shift) / radius;
    }
    return relative;
}

/// The transposed inverse of a placement but for a factor; none where the numbers of the
/// placement or its inverse are so large that single precision ends.
std::optional<std::array<Vec, 3>> NormalTransform(const Transform& p) {
    constexpr double mostForward = 1e12, mostBackward = 1e15;
    double cofactors[9];
    for (std::size_t row = 0; row < 3; ++row) {
        const double* const a = p.data() + (row + 1) % 3 * 4;
        const double* const b = p.data() + (row + 2) % 3 * 4;
        cofactors[row * 3] = a[1] * b[2] - a[2] * b[1];
        cofactors[row * 3 + 1] = a[2] * b[0] - a[0] * b[2];
        cofactors[row * 3 + 2] = a[0] * b[1] - a[1] * b[0];
    }
    const double determinant = p[0] * cofactors[0] + p[1] * cofactors[1] + p[2] * cofactors[2];
    double largest = 0;
    for (const double cofactor : cofactors) largest = std::max(largest, std::fabs(cofactor));
    if (!(largest <= mostBackward * std::fabs(determinant)) || !(largest > 0)) return std::nullopt;
    for (const double value : p) {
        if (!(std::fabs(value) <= mostForward)) return std::nullopt;
    }
    std::array<Vec, 3> rows;
    for (std::size_t row = 0; row < 3; ++row) {
        const double* const c = cofactors + row * 3;
        rows[row] = {static_cast<float>(c[0] / largest), static_cast<float>(c[1] / largest),
                     static_cast<float>(c[2] / largest)};
    }
    return rows;
}

using Corners = std::array<std::array<float, 3>, 3>;

struct HashNumbers {
    template <class Numbers>
    std::size_t operator()(const Numbers& numbers) const {
        std::string_view bytes(reinterpret_cast<const char*>(&numbers), sizeof numbers);
        return std::hash<std::string_view>()(bytes);
    }
};

/// The triangles of a surface without those that cover another one, of which every ray would have
/// to ask which is nearer.
std::vector<std::array<std::uint32_t, 3>> Different(const SceneSurface& surface) {
    std::vector<std::array<std::uint32_t, 3>> different;
    std::unordered_set<Corners, HashNumbers> known;
    different.reserve(surface.triangles.size());
    known.reserve(surface.triangles.size());
    for (const auto& triangle : surface.triangles) {
        Corners corners;
        for (std::size_t i = 0; i < 3; ++i) corners[i] = surface.points[triangle[i]];
        std::sort(corners.begin(), corners.end());
        if (known.insert(corners).second) different.push_back(triangle);
    }
    return different;
}

}  // namespace

bool IsTransparent(const Rgba& colour) {
    return colour.alpha < leastOpaqueAlpha;
}

/// The surfaces of one kind, mesh by mesh, and the meshes where they are placed.
class RayScene::Tree {
  public:
    Tree(const Scene& source, bool transparent, const std::array<double, 3>& center, double radius)
        : source(source),
          transparent(transparent),
          device(NewDevice()),
          scene(rtcNewScene(device.get())),
          meshes(source.meshes.size()) {
        rtcSetSceneFlags(scene.get(), sceneFlags);
        for (std::size_t i = 0; i < source.components.size(); ++i) {
            for (const ScenePlacement& placement : source.components[i].placements) {
                AddInstance(Relative(placement, center, radius), static_cast<std::uint32_t>(i));
            }
        }
        rtcCommitScene(scene.get());
        Check(device);
    }

    void First(std::span<const Ray> rays, std::span<std::optional<SurfacePoint>> met) const {
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        for (std::size_t at = 0; at < rays.size(); at += Packet::most) {
            Packet packet(rays, at);
            rtcIntersect4(packet.valid, scene.get(), &context, &packet.query);
            for (unsigned int i = 0; i < packet.count; ++i) {
                met[at + i].reset();
                const RTCHit hit = packet.HitOf(i);
                if (hit.geomID == RTC_INVALID_GEOMETRY_ID) continue;
                met[at + i] = PointOf(hit, packet.query.ray.tfar[i], rays[at + i].direction);
            }
        }
    }

    /// As First, but the same surface whichever of several coinciding ones is met.
    void FirstOfAll(std::span<const Ray> rays, float tolerance,
                    std::span<std::optional<SurfacePoint>> met) const {
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        for (std::size_t at = 0; at < rays.size(); at += Packet::most) {
            Packet packet(rays, at);
            rtcIntersect4(packet.valid, scene.get(), &context, &packet.query);
            Search search(*this);
            float distances[Packet::most];
            bool isAnyMet = false;
            for (unsigned int i = 0; i < packet.count; ++i) {
                met[at + i].reset();
                search.found[i] = packet.HitOf(i);
                distances[i] = packet.query.ray.tfar[i];
                const bool isMet = search.found[i].geomID != RTC_INVALID_GEOMETRY_ID;
                isAnyMet = isAnyMet || isMet;
                packet.valid[i] = isMet ? -1 : 0;
                packet.query.ray.tnear[i] = std::max(distances[i] - tolerance, 0.0F);
                packet.query.ray.tfar[i] = distances[i] + tolerance;
            }
            if (!isAnyMet) continue;
            rtcOccluded4(packet.valid, scene.get(), &search.context, &packet.query.ray);
            for (unsigned int i = 0; i < packet.count; ++i) {
                if (packet.valid[i] == 0) continue;
                met[at + i] = PointOf(search.found[i], distances[i], rays[at + i].direction);
            }
        }
    }

    void AreBlocked(std::span<const Ray> rays, std::span<std::uint8_t> blocked) const {
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        for (std::size_t at = 0; at < rays.size(); at += Packet::most) {
            Packet packet(rays, at);
            rtcOccluded4(packet.valid, scene.get(), &context, &packet.query.ray);
            for (unsigned int i = 0; i < packet.count; ++i) {
                blocked[at + i] = packet.query.ray.tfar[i] < 0;
            }
        }
    }

    bool IsEmpty() const { return instances.empty(); }

  private:
    /// Rays that the ray tracer follows together.
    struct Packet {
        static constexpr unsigned int most = 4;

        Packet(std::span<const Ray> rays, std::size_t first)
            : count(static_cast<unsigned int>(std::min<std::size_t>(most, rays.size() - first))) {
            for (unsigned int i = 0; i < most; ++i) {
                valid[i] = i < count ? -1 : 0;
                const Ray& ray = rays[first + std::min(i, count - 1)];
                query.ray.org_x[i] = ray.origin.x;
                query.ray.org_y[i] = ray.origin.y;
                query.ray.org_z[i] = ray.origin.z;
                query.ray.tnear[i] = ray.from;
                query.ray.dir_x[i] = ray.direction.x;
                query.ray.dir_y[i] = ray.direction.y;
                query.ray.dir_z[i] = ray.direction.z;
                query.ray.time[i] = 0;
                query.ray.tfar[i] = ray.to;
                query.ray.mask[i] = 0xFFFFFFFF;
                query.ray.id[i] = i;
                query.ray.flags[i] = 0;
                query.hit.geomID[i] = query.hit.instID[0][i] = RTC_INVALID_GEOMETRY_ID;
            }
        }

        RTCHit HitOf(unsigned int i) {
            return rtcGetHitFromHitN(reinterpret_cast<RTCHitN*>(&query.hit), most, i);
        }

        unsigned int count;
        alignas(16) int valid[most];
        RTCRayHit4 query;
    };

    /// What a search for coinciding surfaces knows; it goes along as the query's context.
    struct Search {
        explicit Search(const Tree& tree) : tree(tree) {
            rtcInitIntersectContext(&context);
            context.filter = Consider;
        }

        RTCIntersectContext context;  ///< first: the filter is handed its address
        const Tree& tree;
        RTCHit found[Packet::most];  ///< by ray; to begin with, the surface that was met
    };

    struct Mesh {
        TreeScene scene;  ///< null where it was not needed yet, or holds nothing of this kind
        bool built = false;
        std::vector<std::uint32_t> looks;  ///< by geometry
    };

    struct Instance {
        std::uint32_t component;
        std::uint32_t mesh;
        std::array<Vec, 3> normals;  ///< rows of what turns normals
    };

    Vec NormalOf(const RTCHit& hit) const {
        const Instance& instance = instances[hit.instID[0]];
        const Vec local = {hit.Ng_x, hit.Ng_y, hit.Ng_z};
        return Unit({Dot(instance.normals[0], local), Dot(instance.normals[1], local),
                     Dot(instance.normals[2], local)});
    }

    SurfacePoint PointOf(const RTCHit& hit, float distance, Vec direction) const {
        const Instance& instance = instances[hit.instID[0]];
        Vec normal = NormalOf(hit);
        if (Dot(normal, direction) > 0) normal = -normal;
        return {distance, normal, instance.component, meshes[instance.mesh].looks[hit.geomID]};
    }

    /// Looks at every surface near the first one, keeps the one that goes first, and lets the
    /// search go on.
    static void Consider(const RTCFilterFunctionNArguments* arguments) {
        auto* const search = reinterpret_cast<Search*>(arguments->context);
        const Tree& tree = search->tree;
        constexpr float parallel = 0.999F;
        for (unsigned int i = 0; i < arguments->N; ++i) {
            if (arguments->valid[i] == 0) continue;
            const RTCHit hit = rtcGetHitFromHitN(arguments->hit, arguments->N, i);
            RTCHit& found = search->found[RTCRayN_id(arguments->ray, arguments->N, i)];
            if (Precedes(hit, found) &&
                std::fabs(Dot(tree.NormalOf(hit), tree.NormalOf(found))) > parallel) {
                found = hit;
            }
            arguments->valid[i] = 0;
        }
    }

    bool IsMine(const ScenePart& part) const {
        const Rgba& colour = source.looks[part.look].colour;
        return colour.alpha != 0 && IsTransparent(colour) == transparent;
    }

    RTCScene Built(std::size_t number) {
        Mesh& mesh = meshes[number];
        if (mesh.built) return mesh.scene.get();
        mesh.built = true;
        for (const ScenePart& part : source.meshes[number].parts) {
            if (!IsMine(part)) continue;
            if (!mesh.scene) mesh.scene.reset(rtcNewScene(device.get()));
            mesh.looks.push_back(static_cast<std::uint32_t>(part.look));
            const auto id = static_cast<unsigned int>(mesh.looks.size() - 1);
            rtcAttachGeometryByID(mesh.scene.get(), GeometryOf(part.surface), id);
        }
        if (!mesh.scene) return nullptr;
        rtcSetSceneFlags(mesh.scene.get(), sceneFlags);
        rtcCommitScene(mesh.scene.get());
        return mesh.scene.get();
    }

    RTCGeometry GeometryOf(std::size_t number) {
        auto& known = geometries[number];
        if (known) return known.get();
        const SceneSurface& surface = source.surfaces[number];
        known.reset(rtcNewGeometry(device.get(), RTC_GEOMETRY_TYPE_TRIANGLE));
        CopyBuffer(known.get(), RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT3, surface.points);
        CopyBuffer(known.get(), RTC_BUFFER_TYPE_INDEX, RTC_FORMAT_UINT3, Different(surface));
        rtcCommitGeometry(known.get());
        return known.get();
    }

    template <typename Element>
    void CopyBuffer(RTCGeometry geometry, RTCBufferType type, RTCFormat format,
                    const std::vector<Element>& elements) {
        static_assert(sizeof(Element) == 12);
        void* const bytes =
            rtcSetNewGeometryBuffer(geometry, type, 0, format, sizeof(Element), elements.size());
        if (bytes == nullptr) throw std::bad_alloc();
        std::memcpy(bytes, elements.data(), elements.size() * sizeof(Element));
    }

    /// Leaves out what lies where the same mesh lies already, what has no thickness and what has an
    /// extreme scale: the ray tracer turns rays by the inverse of the placement.
    void AddInstance(const ScenePlacement& placement, std::uint32_t component) {
        if (!placed.insert({placement.toModel, static_cast<double>(placement.mesh)}).second) return;
        const auto normals = NormalTransform(placement.toModel);
        auto* const mesh = normals ? Built(placement.mesh) : nullptr;
        if (mesh == nullptr) return;
        float rows[12];
        std::copy(placement.toModel.begin(), placement.toModel.end(), rows);
        RTCGeometry instance = rtcNewGeometry(device.get(), RTC_GEOMETRY_TYPE_INSTANCE);
        rtcSetGeometryInstancedScene(instance, mesh);
        rtcSetGeometryTransform(instance, 0, RTC_FORMAT_FLOAT3X4_ROW_MAJOR, rows);
        rtcCommitGeometry(instance);
        rtcAttachGeometryByID(scene.get(), instance, static_cast<unsigned int>(instances.size()));
        rtcReleaseGeometry(instance);
        instances.push_back({component, static_cast<std::uint32_t>(placement.mesh), *normals});
    }

    struct ReleaseGeometry {
        void operator()(RTCGeometry geometry) const { rtcReleaseGeometry(geometry); }
    };

    const Scene& source;
    bool transparent;
    Device device;
    TreeScene scene;
    std::vector<Mesh> meshes;
    std::map<std::size_t, std::unique_ptr<RTCGeometryTy, ReleaseGeometry>> geometries;
    std::vector<Instance> instances;

    struct Place {
        Transform toModel;
        double mesh;  ///< its number
        friend bool operator==(const Place&, const Place&) = default;
    };
    std::unordered_set<Place, HashNumbers> placed;
};

RayScene::RayScene(const Scene& scene, const std::array<double, 3>& center, double radius)
    : opaque(std::make_unique<Tree>(scene, false, center, radius)),
      transparent(std::make_unique<Tree>(scene, true, center, radius)) {}

RayScene::~RayScene() = default;

void RayScene::FirstOpaque(std::span<const Ray> rays,
                           std::span<std::optional<SurfacePoint>> met) const {
    opaque->FirstOfAll(rays, skin * 2, met);
}

void RayScene::FirstTransparent(std::span<const Ray> rays,
                                std::span<std::optional<SurfacePoint>> met) const {
    transparent->First(rays, met);
}

bool RayScene::HasTransparent() const {
    return !transparent->IsEmpty();
}

void RayScene::AreBlocked(std::span<const Ray> rays, std::span<std::uint8_t> blocked) const {
    opaque->AreBlocked(rays, blocked);
}

}  // namespace ZVSmartModel
