#!/usr/bin/python3
"""Workbooks for the tests, read and made with openpyxl and by hand.

workbook.py dump FILE...         the cells and the style of workbooks, as JSON
workbook.py resave FILE TO       opened and saved anew by openpyxl
workbook.py corpus FILE FOLDER   variants of a workbook that the program wrote,
                                 as other programs and bad ones would write it
"""
import datetime
import io
import json
import re
import sys
import zipfile

import openpyxl


def dump(paths):
    books = {}
    for path in paths:
        book = openpyxl.load_workbook(path)
        books[path] = [
            {
                "name": sheet.title,
                "rows": [["" if value is None else str(value) for value in row]
                         for row in sheet.iter_rows(values_only=True)],
                "types": sorted({cell.data_type for row in sheet.iter_rows() for cell in row
                                 if cell.value is not None}),
                "fonts": sorted({f"{cell.font.name} {cell.font.sz:g}"
                                 for row in sheet.iter_rows() for cell in row
                                 if cell.value is not None}),
                "height": sheet.row_dimensions[1].height,
                "widths": widths(sheet),
            }
            for sheet in book.worksheets
        ]
    json.dump(books, sys.stdout)


def widths(sheet):
    """The width of each column, groups of columns taken apart."""
    found = {}
    for dimension in sheet.column_dimensions.values():
        for column in range(dimension.min, dimension.max + 1):
            found[column] = dimension.width
    return [found.get(column) for column in range(1, sheet.max_column + 1)]


def read(path):
    with zipfile.ZipFile(path) as source:
        return {name: source.read(name) for name in source.namelist()}


def write(path, parts, compression=zipfile.ZIP_DEFLATED):
    with zipfile.ZipFile(path, "w", compression) as target:
        for name, data in parts.items():
            target.writestr(name, data)


SHEET = "xl/worksheets/sheet1.xml"
STRINGS = "xl/sharedStrings.xml"


def shared_strings(parts):
    xml = parts[STRINGS].decode()
    return [re.sub("<[^>]*>", "", one) for one in re.findall("<si>(.*?)</si>", xml, re.S)]


def each_cell(parts, change):
    """change(place, style, text) gives the new XML of every cell of the first sheet."""
    strings = shared_strings(parts)

    def replaced(match):
        return change(match[1], match[2], strings[int(match[3])])

    xml = parts[SHEET].decode()
    xml = re.sub(r'<c r="(\w+)" s="(\d+)" t="s"><v>(\d+)</v></c>', replaced, xml)
    return {**parts, SHEET: xml.encode()}


def text_cell(place, style, text):
    return f'<c r="{place}" s="{style}" t="inlineStr"><is><t xml:space="preserve">{text}</t></is></c>'


def number_cell(place, style, text):
    try:
        return f'<c r="{place}" s="{style}"><v>{float(text):.17g}</v></c>'
    except ValueError:
        return text_cell(place, style, text)


def formula_cell(place, style, text, value=True):
    if place[-1] == "1" and not place[-2].isdigit():  # the head
        return text_cell(place, style, text)
    cached = f"<v>{text}</v>" if value else ""
    return f'<c r="{place}" s="{style}" t="str"><f>CONCATENATE("{text}")</f>{cached}</c>'


def in_runs(place, style, text):
    if len(text) < 2:
        return text_cell(place, style, text)
    return (f'<c r="{place}" s="{style}" t="inlineStr"><is><r><t>{text[:1]}</t></r>'
            f'<r><t>{text[1:]}</t></r></is></c>')


NUMBERS = {"E2": "20000000", "H2": "1E+20", "K2": "100000", "M2": "1.1000000000000001",
           "O2": "0.5", "P2": "1E-05"}


def with_numbers(parts, kind):
    """Numbers as spreadsheets store them, with and without the type of the cell."""
    return each_cell(parts, lambda place, style, text: (
        f'<c r="{place}" s="{style}"{kind}><v>{NUMBERS[place]}</v></c>' if place in NUMBERS
        else text_cell(place, style, text)))


def boolean_cell(place, style, text):
    values = {"H2": "1", "H5": "0"}
    if place not in values:
        return text_cell(place, style, text)
    return f'<c r="{place}" s="{style}" t="b"><v>{values[place]}</v></c>'


def in_mixed_order(xml):
    """The rows from the last to the first, and the cells of each."""
    rows = re.findall("<row .*?</row>", xml, re.S)
    head, tail = xml[:xml.index(rows[0])], xml[xml.rindex("</row>") + len("</row>"):]
    turned = []
    for row in reversed(rows):
        cells = re.findall("<c .*?</c>", row, re.S)
        turned.append(row[:row.index(">") + 1] + "".join(reversed(cells)) + "</row>")
    return head + "".join(turned) + tail


def written_date(place, style, text):
    if place != "C2":
        return text_cell(place, style, text)
    return f'<c r="{place}" s="{style}" t="d"><v>2026-03-05T07:08:09</v></c>'


def partly_bold(xml):
    """As somebody leaves it who makes the first letter of every text bold."""
    return re.sub(r"<t>(\w)([^<]+)</t>",
                  r'<r><rPr><b/></rPr><t>\1</t></r><r><t xml:space="preserve">\2</t></r>', xml)


def with_readings(xml):
    """As Japanese texts have them, with how they are read above the line."""
    return re.sub("</t></si>", '</t><rPh sb="0" eb="1"><t>reading</t></rPh><phoneticPr fontId="1"/></si>',
                  xml)


def dates(path, target, epoch):
    """Real dates in the cells, the first day of a leap year that never was among them."""
    book = openpyxl.load_workbook(path)
    book.epoch = epoch
    sheet = book.worksheets[0]
    for place, value in {"C2": datetime.datetime(2026, 3, 5, 7, 8, 9), "D2": 59, "C5": 61.5,
                         "D5": 0.25}.items():
        sheet[place].value = value
        sheet[place].number_format = "yyyy-mm-dd hh:mm:ss"
    book.save(target)


def replaced(parts, name, pattern, text):
    xml, count = re.subn(pattern, text, parts[name].decode(), flags=re.S)
    assert count, f"nothing like {pattern} in {name}"
    return {**parts, name: xml.encode()}


def without(parts, *names):
    return {name: data for name, data in parts.items() if name not in names}


def with_rows(parts, rows):
    return replaced(parts, SHEET, "</sheetData>", rows + "</sheetData>")


def renamed_relations(parts, change):
    name = "xl/_rels/workbook.xml.rels"
    return {**parts, name: change(parts[name].decode()).encode()}


def corpus(path, folder):
    parts = read(path)

    def save(name, variant):
        write(f"{folder}/{name}.xlsx", variant)

    # Sound workbooks, as other programs write them.
    save("inline", each_cell(parts, text_cell))
    save("numbers", each_cell(parts, number_cell))
    save("typed-numbers", with_numbers(parts, ' t="n"'))
    save("untyped-numbers", with_numbers(parts, ""))
    save("shared-runs", {**parts, STRINGS: partly_bold(parts[STRINGS].decode()).encode()})
    save("phonetic", {**parts, STRINGS: with_readings(parts[STRINGS].decode()).encode()})
    dates(path, f"{folder}/dates-1900.xlsx", openpyxl.utils.datetime.WINDOWS_EPOCH)
    dates(path, f"{folder}/dates-1904.xlsx", openpyxl.utils.datetime.MAC_EPOCH)
    save("formulas", each_cell(parts, formula_cell))
    save("absolute", renamed_relations(parts, lambda xml: re.sub('Target="', 'Target="/xl/', xml)))
    save("strict", renamed_relations(parts, lambda xml: xml.replace(
        "http://schemas.openxmlformats.org/officeDocument/2006/relationships",
        "http://purl.oclc.org/ooxml/officeDocument/relationships")))
    save("other-names", renamed_relations(
        {**without(parts, SHEET), "xl/data/one.xml": parts[SHEET]},
        lambda xml: xml.replace("worksheets/sheet1.xml", "../xl/data/one.xml")))
    save("prefixed", {**parts, SHEET: re.sub(
        "(</?)(?=[a-zA-Z])", r"\1x:", parts[SHEET].decode()).replace(
            " xmlns=", " xmlns:x=").encode()})
    save("no-dimension", replaced(parts, SHEET, "<dimension [^>]*>", ""))
    save("small-dimension", replaced(parts, SHEET, "<dimension [^>]*>", '<dimension ref="A1"/>'))
    save("big-dimension", replaced(parts, SHEET, "<dimension [^>]*>",
                                   '<dimension ref="A1:XFD1048576"/>'))
    save("no-styles", renamed_relations(
        without(parts, "xl/styles.xml"),
        lambda xml: re.sub('<Relationship [^>]*styles[^>]*/>', "", xml)))
    save("million-empty-rows", with_rows(parts, "".join(
        f'<row r="{row}" ht="15" customHeight="1"/>' for row in range(9, 1_000_001))))
    save("styled-empty-cells", with_rows(parts, "".join(
        f'<row r="{row}"><c r="A{row}" s="1"/><c r="B{row}" s="1"/></row>'
        for row in range(9, 100_001))))
    save("merged", replaced(parts, SHEET, "</sheetData>",
                            '</sheetData><mergeCells count="2"><mergeCell ref="A2:A4"/>'
                            '<mergeCell ref="A5:A7"/></mergeCells>'))
    save("runs", each_cell(parts, in_runs))
    save("mixed-order", {**parts, SHEET: in_mixed_order(parts[SHEET].decode()).encode()})
    save("booleans", each_cell(parts, boolean_cell))
    save("drawing", replaced(parts, SHEET, "</worksheet>",
                             '<drawing xmlns:r="http://schemas.openxmlformats.org/officeDocument/'
                             '2006/relationships" r:id="rId9"/></worksheet>'))

    # Workbooks that cannot be read.
    save("formulas-never-computed", each_cell(parts, lambda *cell: formula_cell(*cell, False)))
    save("written-dates", each_cell(parts, written_date))
    save("cell-twice", replaced(parts, SHEET, 'r="B2"', 'r="C2"'))
    save("damaged-sheet", replaced(parts, SHEET, '<c r="B5"', '<c r="B5<'))
    save("odd-place", replaced(parts, SHEET, 'r="B2"', 'r="2B"'))
    save("long-place", replaced(parts, SHEET, 'r="B2"', 'r="B00000002"'))
    save("another-root", replaced(parts, SHEET, "(</?)worksheet", r"\1chartsheet"))
    for name, index in (("word", "two"), ("negative", "-1"), ("fraction", "1.5"), ("far", "99999")):
        save(f"{name}-for-an-index", replaced(parts, SHEET, r'(r="B2"[^>]*><v>)\d+', rf"\g<1>{index}"))
    save("far-row", replaced(parts, SHEET, 'r="B2"', 'r="B1048577"'))
    save("far-column", replaced(parts, SHEET, 'r="B2"', 'r="XFE2"'))
    save("no-places", replaced(parts, SHEET, r'<c r="\w+"', "<c"))
    save("no-workbook", without(parts, "xl/workbook.xml"))
    save("no-relations", without(parts, "_rels/.rels"))
    save("no-sheet", without(parts, SHEET))
    save("no-strings", without(parts, STRINGS))
    save("few-strings", replaced(parts, STRINGS, "</si><si>.*</si>", "</si>"))
    save("cut-sheet", {**parts, SHEET: parts[SHEET][: len(parts[SHEET]) // 2]})
    save("cut-strings", {**parts, STRINGS: parts[STRINGS][: len(parts[STRINGS]) // 2]})
    save("cut-workbook", {**parts, "xl/workbook.xml": b"<workbook><bookviews>"})
    save("entities", {**parts, SHEET: b'<?xml version="1.0"?><!DOCTYPE w [<!ENTITY a "aaaaaaaaaa">'
                      + b"".join(b'<!ENTITY %c "%s">' % (98 + i, b"&%c;" % (97 + i) * 10)
                                 for i in range(9))
                      + b"]><worksheet><sheetData><row><c r='A1'><v>&j;</v></c></row></sheetData>"
                        b"</worksheet>"})
    save("dialog-sheet", renamed_relations(
        parts, lambda xml: xml.replace("relationships/worksheet", "relationships/dialogsheet", 1)))
    # Small archives that would take more memory than a million points do.
    save("many-cells", with_rows(parts, "".join(
        f'<row r="{row}">' + "".join(f'<c r="{column}{row}"/>' for column in "ABCDEFG") + "</row>"
        for row in range(9, 950_001))))
    save("many-strings", {**parts, STRINGS: parts[STRINGS].replace(
        b"</sst>", b"<si><t/></si>" * 4_100_000 + b"</sst>")})
    save("empty-archive", {})
    save("another-archive", {"a.txt": b"a letter"})

    whole = io.BytesIO()
    write(whole, parts)
    data = whole.getvalue()
    with open(f"{folder}/cut-archive.xlsx", "wb") as cut:
        cut.write(data[: len(data) // 2])
    with open(f"{folder}/damaged.xlsx", "wb") as damaged:
        middle = len(data) // 3
        damaged.write(data[:middle] + bytes(b ^ 0x55 for b in data[middle: middle + 64])
                      + data[middle + 64:])

    # A thousand million blanks and more, and the same with sizes that say otherwise.
    bomb = f"{folder}/bomb.xlsx"
    with zipfile.ZipFile(bomb, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as target:
        for name, part in parts.items():
            if name != SHEET:
                target.writestr(name, part)
        with target.open(SHEET, "w", force_zip64=True) as sheet:
            blanks = b" " * 10_000_000
            sheet.write(parts[SHEET])
            for _ in range(120):
                sheet.write(blanks)
    blanks = parts[SHEET] + b" " * 400_000_000
    with zipfile.ZipFile(f"{folder}/lying-bomb.xlsx", "w", zipfile.ZIP_DEFLATED,
                         compresslevel=1) as target:
        for name, part in parts.items():
            target.writestr(name, part if name != SHEET else blanks)
        target.getinfo(SHEET).file_size = len(parts[SHEET])


def main():
    command, *arguments = sys.argv[1:]
    if command == "dump":
        dump(arguments)
    elif command == "resave":
        openpyxl.load_workbook(arguments[0]).save(arguments[1])
    elif command == "corpus":
        corpus(*arguments)
    else:
        sys.exit(__doc__)


main()
