#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "ZVSmartModel/Values.h"
#include "model/preview/Looker.h"

namespace ZVSmartModel {

/// Some rows of a picture, drawn by themselves: pictures do not depend on who draws which strip.
///
/// A ray goes through the centre of each pixel. Where what it meets is what the pixels around meet,
/// that is the pixel's colour; else the pixel is divided into nine samples. Light is gathered in
/// shares: of nine pixels that lie together each asks another ninth of sky and sun, and takes what
/// those around it on the same surface were told.
class Strip {
  public:
    /// Of so many rows a strip is made.
    static constexpr unsigned int height = 32;

    /// All are borrowed.
    Strip(const Camera& camera, const Shading& shading, Looker& looker, Picture& picture);

    /// Draws the rows from `first` on into the picture.
    void Paint(unsigned int first);

  private:
    using Divided = std::array<Sample, samplesPerPixel>;

    struct Edge {
        int column, row;
        bool hasGlass;
    };

    static constexpr int border = 2;  // pixels around the strip of which the centre is known
    static constexpr std::uint32_t whole = 0xFFFFFFFF;

    std::size_t At(int column, int row) const {
        return static_cast<std::size_t>(row + border) * across +
               static_cast<std::size_t>(column + border);
    }
    Vec DirectionOf(int column, int row, unsigned int number) const;
    unsigned int ShareOf(int column, int row, unsigned int across) const;
    Sample Projected(const Sample& centre, Vec direction) const;
    bool IsAlikeAround(int column, int row) const;
    bool IsSmoothAround(int column, int row) const;
    bool IsGlassAround(int column, int row) const;
    bool IsShadowEven(int column, int row) const;
    const Sample& SampleAt(int x, int y, Sample& projected) const;
    float Line(const Sample& sample, int x, int y) const;
    Vec LightOn(const Sample& sample) const;

    void LookAtCentres();
    void LightCentres();
    void DivideEdges();
    void LookAt(std::size_t edge, unsigned int number);
    void DivideShadows();
    void LightDivided();
    void TakeLightAround(Sample& sample, int column, int row, unsigned int number);
    void PaintWhole(int column, int row);
    void PaintDivided(int column, int row);
    void Store(int column, int row, Vec light, float cover);

    const Camera& camera;
    const Shading& shading;
    Looker& looker;
    Picture& picture;
    int columns;
    std::size_t across;  ///< centres in a row
    int firstRow = 0, rows = 0;
    std::vector<Gaze> gazes;
    std::vector<Edge> edges;
    std::vector<Sample> centres;
    std::vector<std::uint32_t> divisions;  ///< by centre: the number of its samples, or `whole`
    std::vector<Divided> divided;
    std::vector<bool> isEdge;  ///< by division: else only a shadow ends here
    std::vector<Lighting> forSky, forSun;
};

}  // namespace ZVSmartModel
