// Writes a block file with two walls that share one shape.
//
//     write_block house.zvg

#include <cstdio>
#include <exception>
#include <string>

#include "ZVSmartFormat/FileStream.h"
#include "ZVSmartZvg/ZVSmartZvg.h"

using namespace ZVSmartZvg;

namespace {

/// A sheet in the XZ plane with its corner at the origin.
SZVLGZvgGeo Sheet(double width, double height) {
    CZVIMShell shell;
    shell.AddPts({{0, 0, 0}, {width, 0, 0}, {width, 0, height}, {0, 0, height}});
    shell.AddFaceIndex({0, 1, 2, 3});
    SZVLGZvgGeo geo;
    geo.shells.push_back(shell);
    return geo;
}

/// The geometry stored under `name`, moved along Y.
SZVLGZvgGeo Moved(const std::wstring& name, double y) {
    SZVLGZvgGeo geo;
    geo.namedTransfs.push_back({name, {}});
    geo.namedTransfs.back().transf.SetAt(1, 3, y);
    return geo;
}

SZVLGZvgComp Wall(const std::wstring& name, const std::wstring& shape, double y) {
    SZVLGZvgComp wall;
    wall.classLevel1Name = L"Ground floor";
    wall.classLevel2Name = L"Wall";
    wall.compGuidName = name;
    wall.compProperties = {{L"FireRating", L"REI 60"}};
    wall.geoRefs.emplace_back();
    wall.geoRefs.back().geoIdentification = name;
    wall.geoRefs.back().geo = Moved(shape, y);
    return wall;
}

/// False where the system did not take every byte.
bool Write(ZVSmartFormat::CZVFTOutStream& out) {
    SZVLGZvgBlockHeadInfo head;
    head.firstText = L"Two walls";
    head.secondText = L"unit: m";

    CZVLGBlockSaver saver;
    saver.Init(&out, head);
    saver.AddIdentificationGeo(L"sheet 4 x 2.5", Sheet(4, 2.5));
    saver.AddComp(Wall(L"front wall", L"sheet 4 x 2.5", 0));
    saver.AddComp(Wall(L"back wall", L"sheet 4 x 2.5", 6));
    saver.WriteEnd();

    // A file stream hands on what it still holds when it seeks, and loses its position where
    // that fails.
    const ZVSmartFormat::u64 end = out.GetPos();
    out.Seek(end);
    return out.GetPos() == end;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fputs("usage: write_block FILE\n", stderr), 2;
    ZVSmartFormat::CZVFTFileOutStream out(argv[1]);
    if (!out.Open()) return std::perror(argv[1]), 1;
    try {
        if (Write(out)) return 0;
        std::perror(argv[1]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[1], failure.what());
    }
    return 1;
}
