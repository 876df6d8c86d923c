#include "model/preview/Strip.h"

#include <algorithm>
#include <cmath>

namespace ZVSmartModel {

namespace {

constexpr Vec lineColour = {0.012F, 0.013F, 0.016F};
constexpr unsigned int middle = samplesPerPixel / 2;

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

/// Whether nothing tells one from the other but where they are.
bool AreAlike(const Sample& a, const Sample& b, float width) {
    constexpr float even = 0.02F;
    if (a.hit != b.hit || std::fabs(a.behind - b.behind) > even) return false;
    const Vec glass = a.glass - b.glass;
    if (std::max({std::fabs(glass.x), std::fabs(glass.y), std::fabs(glass.z)}) > even) return false;
    return !a.hit || (a.surface.component == b.surface.component &&
                      a.surface.look == b.surface.look && AreOnOneSurface(a, b, width));
}

int PixelOf(int sample) {
    return (sample + static_cast<int>(samplesAcross)) / static_cast<int>(samplesAcross) - 1;
}

}  // namespace

Strip::Strip(const Camera& camera, const Shading& shading, Looker& looker, Picture& picture)
    : camera(camera),
      shading(shading),
      looker(looker),
      picture(picture),
      columns(static_cast<int>(picture.width)),
      across(std::size_t{picture.width} + std::size_t{2} * border) {}

void Strip::Paint(unsigned int first) {
    firstRow = static_cast<int>(first);
    rows = static_cast<int>(std::min(height, picture.height - first));
    centres.resize(across * static_cast<std::size_t>(rows + 2 * border));
    divisions.assign(centres.size(), whole);
    LookAtCentres();
    LightCentres();
    DivideEdges();
    DivideShadows();
    LightDivided();
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            if (divisions[At(column, row)] == whole) {
                PaintWhole(column, row);
            } else {
                PaintDivided(column, row);
            }
        }
    }
}

Vec Strip::DirectionOf(int column, int row, unsigned int number) const {
    const auto aside = [](unsigned int place) {
        return (static_cast<float>(place) + 0.5F) / samplesAcross;
    };
    return camera.Direction(static_cast<float>(column) + aside(number % samplesAcross),
                            static_cast<float>(firstRow + row) + aside(number / samplesAcross));
}

/// Pixels in a square of `size` times `size` have each another share.
unsigned int Strip::ShareOf(int column, int row, unsigned int size) const {
    const unsigned int x = static_cast<unsigned int>(column + border) % size;
    const unsigned int y = static_cast<unsigned int>(firstRow + row + border) % size;
    return x + y * size;
}

void Strip::LookAtCentres() {
    gazes.clear();
    for (int row = -border; row < rows + border; ++row) {
        for (int column = -border; column < columns + border; ++column) {
            gazes.push_back({&centres[At(column, row)], DirectionOf(column, row, middle), true});
        }
    }
    looker.Look(gazes);
}

void Strip::LightCentres() {
    const auto collect = [&](std::vector<Lighting>& wanted, int row, unsigned int sharesAcross) {
        // Those with one share beside each other: their rays are nearly parallel.
        const int apart = static_cast<int>(sharesAcross);
        wanted.clear();
        for (int first = -border; first < -border + apart; ++first) {
            for (int column = first; column < columns + border; column += apart) {
                Sample& centre = centres[At(column, row)];
                if (centre.hit) wanted.push_back({&centre, ShareOf(column, row, sharesAcross)});
            }
        }
    };
    for (int row = -border; row < rows + border; ++row) {
        collect(forSky, row, skySharesAcross);
        looker.LightBySky(forSky);
        collect(forSun, row, samplesAcross);
        looker.LightBySun(forSun);
    }
}

bool Strip::IsAlikeAround(int column, int row) const {
    const Sample& centre = centres[At(column, row)];
    for (int y = row - 1; y <= row + 1; ++y) {
        for (int x = column - 1; x <= column + 1; ++x) {
            if (!AreAlike(centre, centres[At(x, y)], camera.PixelSize())) return false;
        }
    }
    return true;
}

bool Strip::IsGlassAround(int column, int row) const {
    for (int y = row - 1; y <= row + 1; ++y) {
        for (int x = column - 1; x <= column + 1; ++x) {
            if (centres[At(x, y)].behind != 1) return true;
        }
    }
    return false;
}

/// Divides pixels in which more than one thing is seen, and those one pixel around the strip, of
/// which the samples at the border are needed. Where the corners show what the centre shows, so
/// does what lies between them.
void Strip::DivideEdges() {
    constexpr unsigned int last = samplesPerPixel - 1;
    constexpr std::array<unsigned int, 4> corners = {0, samplesAcross - 1, last - samplesAcross + 1,
                                                     last};
    constexpr std::array<unsigned int, 4> sides = {1, samplesAcross, last - samplesAcross,
                                                   last - 1};
    edges.clear();
    for (int row = -1; row < rows + 1; ++row) {
        for (int column = -1; column < columns + 1; ++column) {
            if (IsAlikeAround(column, row)) continue;
            divisions[At(column, row)] = static_cast<std::uint32_t>(edges.size());
            edges.push_back({column, row, IsGlassAround(column, row)});
        }
    }
    divided.resize(edges.size());
    isEdge.assign(edges.size(), true);
    gazes.clear();
    for (std::size_t n = 0; n < edges.size(); ++n) {
        divided[n][middle] = centres[At(edges[n].column, edges[n].row)];
        for (const unsigned int i : corners) LookAt(n, i);
    }
    looker.Look(gazes);
    gazes.clear();
    for (std::size_t n = 0; n < edges.size(); ++n) {
        Divided& samples = divided[n];
        const bool isOneSurface = std::all_of(corners.begin(), corners.end(), [&](unsigned int i) {
            return AreAlike(samples[middle], samples[i], camera.PixelSize());
        });
        for (const unsigned int i : sides) {
            if (isOneSurface) {
                samples[i] =
                    Projected(samples[middle], DirectionOf(edges[n].column, edges[n].row, i));
            } else {
                LookAt(n, i);
            }
        }
    }
    looker.Look(gazes);
}

void Strip::LookAt(std::size_t edge, unsigned int number) {
    const Edge& at = edges[edge];
    gazes.push_back({&divided[edge][number], DirectionOf(at.column, at.row, number), at.hasGlass});
}

bool Strip::IsShadowEven(int column, int row) const {
    const bool isSunny = centres[At(column, row)].isSunny;
    for (int y = row - 1; y <= row + 1; ++y) {
        for (int x = column - 1; x <= column + 1; ++x) {
            if (centres[At(x, y)].isSunny != isSunny) return false;
        }
    }
    return true;
}

/// Divides pixels of one surface on which a shadow begins or ends.
void Strip::DivideShadows() {
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            std::uint32_t& division = divisions[At(column, row)];
            const Sample& centre = centres[At(column, row)];
            if (division != whole || !centre.hit || IsShadowEven(column, row)) continue;
            division = static_cast<std::uint32_t>(divided.size());
            Divided& samples = divided.emplace_back();
            isEdge.push_back(false);
            for (unsigned int i = 0; i < samplesPerPixel; ++i) {
                samples[i] = Projected(centre, DirectionOf(column, row, i));
            }
        }
    }
}

/// What is seen beside a sample if its surface goes on.
Sample Strip::Projected(const Sample& centre, Vec direction) const {
    Sample sample = centre;
    if (!centre.hit) return sample;
    const float toward = Dot(direction, centre.surface.normal);
    const float away = Dot(centre.point - camera.Position(), centre.surface.normal);
    const float distance = away / toward;
    constexpr float most = 1.5F;  // times as far; beyond that the surface is seen edge-on
    if (distance > centre.surface.distance / most && distance < centre.surface.distance * most) {
        sample.surface.distance = distance;
    }
    sample.point = camera.Position() + direction * sample.surface.distance;
    return sample;
}

void Strip::LightDivided() {
    forSky.clear();
    forSun.clear();
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const std::uint32_t division = divisions[At(column, row)];
            if (division == whole) continue;
            Divided& samples = divided[division];
            for (unsigned int i = 0; i < samplesPerPixel; ++i) {
                if (!samples[i].hit) continue;
                const auto isKnown = [&](const Sample& other) {
                    return other.isLit && AreOnOneSurface(other, samples[i], camera.PixelSize());
                };
                const auto known = std::find_if(samples.begin(), samples.begin() + i, isKnown);
                if (known == samples.begin() + i) {
                    TakeLightAround(samples[i], column, row, i);
                } else {
                    samples[i].openSky = known->openSky;
                    samples[i].sun = known->sun;
                    samples[i].isLit = true;
                }
            }
        }
    }
    looker.LightBySky(forSky);
    looker.LightBySun(forSun);
}

/// Takes the light of pixels near by that show the same surface; where there are too few, or a
/// shadow ends among them, light is asked for.
void Strip::TakeLightAround(Sample& sample, int column, int row, unsigned int number) {
    constexpr int enough = 3;
    float open = 0;
    int count = 0, sunny = 0;
    for (int y = row - border; y <= row + border; ++y) {
        for (int x = column - border; x <= column + border; ++x) {
            const Sample& centre = centres[At(x, y)];
            if (!AreOnOneSurface(sample, centre, camera.PixelSize())) continue;
            open += centre.openSky;
            ++count;
            sunny += centre.isSunny ? 1 : 0;
        }
    }
    sample.isLit = count >= enough && (sunny == 0 || sunny == count);
    if (count < enough) {
        forSky.push_back({&sample, (ShareOf(column, row, skySharesAcross) + number) % skyShares});
    } else {
        sample.openSky = open / static_cast<float>(count);
    }
    if (!sample.isLit) {
        forSun.push_back({&sample, number});
    } else {
        sample.sun = sunny != 0 ? shading.SunLight(sample.surface.normal) : 0;
    }
}

/// What is seen at a place among all samples of the strip; `projected` keeps it where no ray went.
const Sample& Strip::SampleAt(int x, int y, Sample& projected) const {
    constexpr int size = samplesAcross;
    const int column = PixelOf(x), row = PixelOf(y);
    const auto number = static_cast<unsigned int>((y - row * size) * size + x - column * size);
    const std::uint32_t division = divisions[At(column, row)];
    if (division != whole) return divided[division][number];
    projected = Projected(centres[At(column, row)], DirectionOf(column, row, number));
    return projected;
}

float Strip::Line(const Sample& sample, int x, int y) const {
    float strength = 0;
    Sample projected;
    for (const auto& [otherX, otherY] :
         {std::pair(x - 1, y), std::pair(x + 1, y), std::pair(x, y - 1), std::pair(x, y + 1)}) {
        const Sample& other = SampleAt(otherX, otherY, projected);
        strength =
            std::max(strength, LineStrength(sample, other, camera.PixelSize() / samplesAcross));
    }
    return strength;
}

Vec Strip::LightOn(const Sample& sample) const {
    return shading.Light(sample.surface, sample.openSky, sample.sun);
}

/// Whether the surface goes on, alike, for two pixels in all directions.
bool Strip::IsSmoothAround(int column, int row) const {
    const auto isSmooth = [&](int x, int y) {
        const std::uint32_t division = divisions[At(x, y)];
        return division == whole || !isEdge[division];
    };
    return isSmooth(column - 1, row - 1) && isSmooth(column + 1, row - 1) &&
           isSmooth(column - 1, row + 1) && isSmooth(column + 1, row + 1);
}

void Strip::PaintWhole(int column, int row) {
    Sample seen = centres[At(column, row)];
    if (!seen.hit) {
        Store(column, row, seen.glass, 1 - seen.behind);
        return;
    }
    const bool isSmooth = IsSmoothAround(column, row);
    float open = 0;
    int count = 0;
    for (int y = row - border; y <= row + border; ++y) {
        for (int x = column - border; x <= column + border; ++x) {
            const Sample& other = centres[At(x, y)];
            if (!isSmooth && !AreOnOneSurface(seen, other, camera.PixelSize())) continue;
            open += other.openSky;
            ++count;
        }
    }
    seen.openSky = open / static_cast<float>(count);
    seen.sun = seen.isSunny ? shading.SunLight(seen.surface.normal) : 0;
    Store(column, row, seen.glass + LightOn(seen) * seen.behind, 1);
}

void Strip::PaintDivided(int column, int row) {
    constexpr int size = samplesAcross;
    const std::uint32_t division = divisions[At(column, row)];
    Vec light;
    float cover = 0;
    for (unsigned int i = 0; i < samplesPerPixel; ++i) {
        const Sample& sample = divided[division][i];
        light = light + sample.glass;
        cover += 1 - sample.behind;
        if (!sample.hit) continue;
        Vec seen = LightOn(sample);
        if (isEdge[division]) {
            const int x = column * size + static_cast<int>(i) % size;
            const int y = row * size + static_cast<int>(i) / size;
            seen = Mix(seen, lineColour, Line(sample, x, y));
        }
        light = light + seen * sample.behind;
        cover += sample.behind;
    }
    Store(column, row, light * (1.0F / samplesPerPixel), cover / samplesPerPixel);
}

/// `light` is that of what covers the pixel, by `cover`.
void Strip::Store(int column, int row, Vec light, float cover) {
    if (cover <= 0) return;
    const std::size_t at =
        static_cast<std::size_t>(firstRow + row) * picture.width + static_cast<std::size_t>(column);
    std::uint8_t* const pixel = picture.pixels.data() + at * 4;
    const float values[3] = {light.x / cover, light.y / cover, light.z / cover};
    for (int channel = 0; channel < 3; ++channel) {
        pixel[channel] = static_cast<std::uint8_t>(std::lround(Encoded(values[channel]) * 255));
    }
    pixel[3] = static_cast<std::uint8_t>(std::lround(cover * 255));
}

}  // namespace ZVSmartModel
