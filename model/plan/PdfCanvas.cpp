#include "model/plan/PdfCanvas.h"

#include <cmath>
#include <numbers>

#include "ZVSmartModel/Error.h"
#include "model/plan/Arc.h"
#include "model/plan/CairoFunctions.h"

namespace ZVSmartModel {

namespace {

constexpr double pointsPerMillimetre = 72 / 25.4;

cairo_status_t Append(void* to, const unsigned char* bytes, unsigned int count) {
    try {
        static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(bytes), count);
    } catch (...) {
        return CAIRO_STATUS_NO_MEMORY;
    }
    return CAIRO_STATUS_SUCCESS;
}

/// Draws with cairo, whose Y runs down as that of the sheet.
class PdfCanvas : public Canvas {
  public:
    explicit PdfCanvas(const std::string& title)
        : surface(cairo_pdf_surface_create_for_stream(Append, &bytes, 1, 1)),
          cairo(cairo_create(surface)) {
        cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_TITLE, title.c_str());
        cairo_set_line_join(cairo, CAIRO_LINE_JOIN_ROUND);
        cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
    }
    ~PdfCanvas() override {
        cairo_destroy(cairo);
        cairo_surface_destroy(surface);
    }
    PdfCanvas(const PdfCanvas&) = delete;
    PdfCanvas& operator=(const PdfCanvas&) = delete;

    void BeginPage(const PageSize& size) override {
        cairo_pdf_surface_set_size(surface, size.width * pointsPerMillimetre,
                                   size.height * pointsPerMillimetre);
        cairo_identity_matrix(cairo);
        cairo_scale(cairo, pointsPerMillimetre, pointsPerMillimetre);
    }
    void EndPage() override { cairo_show_page(cairo); }
    void SetFrame(const SheetFrame& inFrame) override { frame = inFrame; }
    void BeginFloor(const CanvasGroup&) override {}
    void EndFloor() override {}
    void BeginLayer(const CanvasGroup&, const Ink& ink) override { layerInk = ink; }
    void EndLayer() override {}
    void BeginElement(const CanvasGroup&) override {}
    void EndElement() override {}
    void Draw(const std::vector<PlanPath>& paths) override { Draw(paths, layerInk); }

    void Draw(const std::vector<PlanPath>& paths, const Ink& ink) override {
        cairo_new_path(cairo);
        for (const PlanPath& path : paths) Follow(path);
        if (ink.fill != "none") {
            Dip(ink.fill);
            cairo_set_fill_rule(cairo,
                                ink.isNonzero ? CAIRO_FILL_RULE_WINDING : CAIRO_FILL_RULE_EVEN_ODD);
            cairo_fill_preserve(cairo);
        }
        if (ink.stroke != "none") {
            constexpr double dashes[] = {1.2, 0.8};
            Dip(ink.stroke);
            cairo_set_line_width(cairo, ink.width);
            cairo_set_dash(cairo, dashes, ink.isDashed ? 2 : 0, 0);
            cairo_stroke_preserve(cairo);
        }
        cairo_new_path(cairo);
    }

    void Write(const CanvasText& text) override {
        const PlanPoint at = frame.OnPaper(text.at);
        cairo_select_font_face(cairo, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                               text.isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_font_size(cairo, text.size);
        cairo_text_extents_t extents;
        cairo_text_extents(cairo, text.text.c_str(), &extents);
        double back = 0;
        if (text.anchor == TextAnchor::Middle) back = extents.x_advance / 2;
        if (text.anchor == TextAnchor::End) back = extents.x_advance;
        cairo_save(cairo);
        cairo_translate(cairo, at.x, at.y);
        cairo_rotate(cairo, -text.angle);
        cairo_move_to(cairo, -back, 0);
        cairo_text_path(cairo, text.text.c_str());
        Dip("#ffffff");
        cairo_set_line_width(cairo, 2 * textRim);
        cairo_set_dash(cairo, nullptr, 0, 0);
        cairo_stroke(cairo);
        Dip(text.colour);
        cairo_move_to(cairo, -back, 0);
        cairo_show_text(cairo, text.text.c_str());
        cairo_restore(cairo);
    }

    std::string Take() override {
        cairo_surface_finish(surface);
        if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS ||
            cairo_status(cairo) != CAIRO_STATUS_SUCCESS) {
            throw Error(Status::Internal, "the PDF document cannot be made");
        }
        return std::move(bytes);
    }

  private:
    void Dip(const std::string& colour) {
        const auto part = [&](std::size_t at) {
            return std::stoi(colour.substr(at, 2), nullptr, 16) / 255.0;
        };
        cairo_set_source_rgb(cairo, part(1), part(3), part(5));
    }

    void Follow(const PlanPath& path) {
        const std::size_t count = path.vertices.size();
        if (count == 0) return;
        const PlanPoint first = frame.OnPaper(path.vertices.front().point);
        cairo_move_to(cairo, first.x, first.y);
        for (std::size_t i = 0; i + (path.closed ? 0 : 1) < count; ++i) {
            const PlanVertex& from = path.vertices[i];
            FollowPiece(from, path.vertices[(i + 1) % count].point);
        }
        if (path.closed) cairo_close_path(cairo);
    }

    void FollowPiece(const PlanVertex& from, const PlanPoint& to) {
        if (IsArc(from.point, to, from.bulge)) {
            constexpr int chords = 48;
            for (int i = 1; i < chords; ++i) {
                const double fraction = static_cast<double>(i) / chords;
                const PlanPoint at = frame.OnPaper(ArcPoint(from.point, to, from.bulge, fraction));
                cairo_line_to(cairo, at.x, at.y);
            }
        }
        const PlanPoint at = frame.OnPaper(to);
        cairo_line_to(cairo, at.x, at.y);
    }

    std::string bytes;
    cairo_surface_t* surface;
    cairo_t* cairo;
    SheetFrame frame;
    Ink layerInk;
};

}  // namespace

std::unique_ptr<Canvas> MakePdfCanvas(const std::string& title) {
    return std::make_unique<PdfCanvas>(title);
}

}  // namespace ZVSmartModel
