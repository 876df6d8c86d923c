// Makes of a block file one SQLite database with the same content in the same precision: a row
// and an xz blob per component, a row and an xz blob per geometry, a row per property.
//   make_database FILE.zvg FILE.sqlite
// A blob is kept as it is where xz does not make it smaller.

#include <cstdlib>
#include <map>
#include <tuple>
#include <unordered_map>

#include "ZVSmartFormat/FileStream.h"
#include "ZVSmartSerial/Serial.h"
#include "bench/Database.h"
#include "bench/OpenFile.h"
#include "bench/Payload.h"

using namespace bench;
using ZVSmartZvg::CZVLGBlockReader;
using ZVSmartZvg::SZVLGZvgGeoIndex;

namespace {

constexpr const char* schema = R"(
    CREATE TABLE floor(id INTEGER PRIMARY KEY, name TEXT, level INTEGER);
    CREATE TABLE class(id INTEGER PRIMARY KEY, level2 TEXT, level3 TEXT, level4 TEXT, level2b TEXT,
                       owner TEXT, ownerText TEXT, attributes BLOB);
    CREATE TABLE component(id INTEGER PRIMARY KEY, floor INTEGER, class INTEGER, guid TEXT,
                           body BLOB);
    CREATE TABLE property(component INTEGER, position INTEGER, name TEXT, value TEXT,
                          PRIMARY KEY(component, position)) WITHOUT ROWID;
    CREATE TABLE reference(component INTEGER, position INTEGER, geometry INTEGER,
                           PRIMARY KEY(component, position)) WITHOUT ROWID;
    CREATE TABLE geometry(id INTEGER PRIMARY KEY, name TEXT, body BLOB);
    BEGIN)";

Bytes Packed(View content) {
    constexpr std::size_t xzFrameBytes = 64;  // a stream's headers, index and footer, about
    if (content.size() <= xzFrameBytes) return Bytes(content.begin(), content.end());
    Bytes encoded = Encoded(content, defaultSettings);
    return encoded.size() < content.size() ? encoded : Bytes(content.begin(), content.end());
}

/// Bytes that the values which `write` gets a writer for come to.
template <class Write>
Bytes Serial(Write write) {
    ZVSmartFormat::AllocBuffer buffer;
    ZVSmartFormat::CZVFTAllocBufferOutStream out(&buffer);
    ZVSmartSerial::CZVFTSerialWriter writer(&out);
    write(writer);
    Bytes bytes(buffer.data, buffer.data + out.GetPos());
    std::free(buffer.data);
    return bytes;
}

void WriteAttr(ZVSmartSerial::CZVFTSerialWriter& writer,
               const ZVSmartZvg::SZVLGZvgDisplayAttr& attr) {
    writer.WriteU16(attr.flags);
    if ((attr.flags & 0x10) == 0) return;
    for (const u8 channel : {attr.red, attr.green, attr.blue, attr.alpha}) writer.WriteU8(channel);
}

/// What a component has besides its properties, its class and its geometries.
Bytes BodyOf(const SZVLGZvgComp& comp) {
    return Serial([&](ZVSmartSerial::CZVFTSerialWriter& writer) {
        writer.WriteKey(comp.groupGuidName);
        writer.WriteCount(comp.relatedGuidNames.size());
        for (const auto& key : comp.relatedGuidNames) writer.WriteKey(key);
        for (const auto& reference : comp.geoRefs) {
            writer.WriteU8(reference.refKind);
            writer.WriteU32(reference.refValueA);
            writer.WriteU32(reference.refValueB);
            for (const auto& [number, material] : reference.materials) {
                writer.WriteU32(number);
                writer.WriteKey(material.guidName);
                writer.WriteWString(material.textA);
                writer.WriteWString(material.textB);
                for (const auto& [name, value] : material.properties) {
                    writer.WriteWString(name);
                    writer.WriteWString(value);
                }
            }
        }
        WriteAttr(writer, comp.compAttr);
    });
}

using Geometries = std::unordered_map<std::wstring, sqlite3_int64>;

class Filler {
  public:
    explicit Filler(Database& database) : database(database) {}

    /// The records' own bytes, which lie behind their lengths in the decoded blocks.
    void AddGeometries(CZVLGBlockReader& reader, const FileParts& parts) {
        Statement insert(database, "INSERT INTO geometry VALUES(?, ?, ?)");
        u32 decodedBlock = 0xFFFFFFFF;
        Bytes block;
        Records records;
        for (const auto& [place, name] : IdentificationsByPlace(reader)) {
            if (place.first != decodedBlock) {
                decodedBlock = place.first;
                const Block& encoded = parts.geos[decodedBlock];
                block = Decoded(encoded.encoded, encoded.decodedSize);
                records = ReadRecords(block);
            }
            const u32 start = records.offsets[place.second] + 4;
            const u32 end = place.second + 1 < records.offsets.size()
                                ? records.offsets[place.second + 1]
                                : records.tableOffset;
            const auto id = static_cast<sqlite3_int64>(geometries.size());
            insert.Bind(1, id).Bind(2, name).Bind(3,
                                                  Packed(View(block).subspan(start, end - start)));
            insert.Execute();
            geometries[name] = id;
        }
    }

    void AddFloors(CZVLGBlockReader& reader) {
        Statement insert(database, "INSERT INTO floor VALUES(?, ?, ?)");
        for (u32 floor = 0; floor < reader.GetFloorNum(); ++floor) {
            insert.Bind(1, floor)
                .Bind(2, reader.GetFloorNameByIndex(floor))
                .Bind(3, reader.GetFloorOrderByIndex(floor));
            insert.Execute();
            for (u32 i = 0; i < reader.GetFloorCompNum(floor); ++i) {
                SZVLGZvgComp comp;
                reader.GetCompByIndex({floor, i}, comp);
                AddComponent(floor, comp);
            }
        }
    }

  private:
    sqlite3_int64 ClassOf(const SZVLGZvgComp& comp) {
        const auto key =
            std::make_tuple(comp.classLevel2Name, comp.classLevel3Name, comp.classLevel4Name,
                            comp.classLevel2bName, comp.ownerGuidName.name, comp.ownerTextA);
        const auto [found, isNew] = classes.emplace(key, classes.size());
        if (!isNew) return found->second;
        const Bytes attributes = Serial([&](ZVSmartSerial::CZVFTSerialWriter& writer) {
            WriteAttr(writer, comp.classLevel4Attr);
            WriteAttr(writer, comp.classLevel2bAttr);
        });
        Statement insert(database, "INSERT INTO class VALUES(?, ?, ?, ?, ?, ?, ?, ?)");
        insert.Bind(1, found->second)
            .Bind(2, comp.classLevel2Name)
            .Bind(3, comp.classLevel3Name)
            .Bind(4, comp.classLevel4Name)
            .Bind(5, comp.classLevel2bName)
            .Bind(6, comp.ownerGuidName.name)
            .Bind(7, comp.ownerTextA)
            .Bind(8, attributes);
        insert.Execute();
        return found->second;
    }

    void AddComponent(u32 floor, const SZVLGZvgComp& comp) {
        const sqlite3_int64 id = components++;
        component.Bind(1, id)
            .Bind(2, floor)
            .Bind(3, ClassOf(comp))
            .Bind(4, comp.compGuidName.name)
            .Bind(5, Packed(BodyOf(comp)));
        component.Execute();
        sqlite3_int64 position = 0;
        for (const auto& [name, value] : comp.compProperties) {
            property.Bind(1, id).Bind(2, position++).Bind(3, name).Bind(4, value);
            property.Execute();
        }
        position = 0;
        for (const auto& geoRef : comp.geoRefs) {
            for (const auto& row : geoRef.geoIds) {
                const auto found = geometries.find(GetGeoIdentification(row));
                reference.Bind(1, id).Bind(2, position++);
                reference.Bind(3, found == geometries.end() ? -1 : found->second);
                reference.Execute();
            }
        }
    }

    Database& database;
    Statement component{database, "INSERT INTO component VALUES(?, ?, ?, ?, ?)"};
    Statement property{database, "INSERT INTO property VALUES(?, ?, ?, ?)"};
    Statement reference{database, "INSERT INTO reference VALUES(?, ?, ?)"};
    Geometries geometries;
    std::map<std::tuple<std::wstring, std::wstring, std::wstring, std::wstring, std::wstring,
                        std::wstring>,
             sqlite3_int64>
        classes;
    sqlite3_int64 components = 0;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    std::remove(argv[2]);
    OpenFile file(ReadWholeFile(argv[1]));
    Database database(argv[2], true);
    database.Run(schema);
    {
        Filler filler(database);
        filler.AddGeometries(file.reader, ReadFileParts(file.bytes));
        filler.AddFloors(file.reader);
    }
    database.Run("COMMIT; VACUUM");
    return 0;
}
