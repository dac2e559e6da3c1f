// The reader of workbooks: the input is an archive, or one of its parts within an
// archive that is sound otherwise. Its tags say which part.

#include "fuzz_import.h"

#include <archive.h>
#include <archive_entry.h>

#include <cstdint>

namespace {

struct part
{
    const char* name;
    const char* tag; ///< that only this part has
    QByteArray xml;
};

const part sound_parts[] = {
    {"xl/worksheets/sheet1.xml", "sheetData",
     "<worksheet><sheetData><row r=\"1\"><c r=\"A1\" t=\"s\"><v>0</v></c></row></sheetData>"
     "</worksheet>"},
    {"xl/sharedStrings.xml", "sst", "<sst><si><t>No.</t></si></sst>"},
    {"xl/styles.xml", "styleSheet",
     "<styleSheet><cellXfs count=\"2\"><xf numFmtId=\"0\"/><xf numFmtId=\"22\"/></cellXfs>"
     "</styleSheet>"},
    {"xl/workbook.xml", "sheets",
     "<workbook xmlns:r=\"r\"><sheets><sheet name=\"Waypoint\" sheetId=\"1\" r:id=\"rId1\"/>"
     "</sheets></workbook>"},
    {"xl/_rels/workbook.xml.rels", "sharedStrings.xml",
     "<Relationships><Relationship Id=\"rId1\" Type=\"x/worksheet\" "
     "Target=\"worksheets/sheet1.xml\"/><Relationship Id=\"rId2\" Type=\"x/styles\" "
     "Target=\"styles.xml\"/><Relationship Id=\"rId3\" Type=\"x/sharedStrings\" "
     "Target=\"sharedStrings.xml\"/></Relationships>"},
    {"_rels/.rels", "officeDocument",
     "<Relationships><Relationship Id=\"rId1\" Type=\"x/officeDocument\" "
     "Target=\"xl/workbook.xml\"/></Relationships>"},
};

QByteArray workbook_with(const QByteArray& input)
{
    QByteArray bytes(input.size() + 65'536, '\0');
    size_t used = 0;
    archive* target = archive_write_new();
    archive_write_set_format_zip(target);
    archive_write_zip_set_compression_store(target);
    archive_write_set_bytes_in_last_block(target, 1);
    archive_write_open_memory(target, bytes.data(), static_cast<size_t>(bytes.size()), &used);
    bool replaced = false;
    for (const part& one : sound_parts) {
        const bool replace = !replaced && input.contains(one.tag);
        replaced = replaced || replace;
        const QByteArray& xml = replace ? input : one.xml;
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, one.name);
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_size(entry, xml.size());
        archive_write_header(target, entry);
        archive_write_data(target, xml.constData(), static_cast<size_t>(xml.size()));
        archive_entry_free(entry);
    }
    archive_write_close(target);
    archive_write_free(target);
    return bytes.first(static_cast<qsizetype>(used));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const bool is_archive = bytes.startsWith("PK");
    fuzz_import(is_archive ? bytes : workbook_with(bytes), "xlsx");
    return 0;
}
