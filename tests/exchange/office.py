#!/usr/bin/python3
"""A person at the spreadsheet program: LibreOffice without a window.

office.py JOB...       in the order given, where a JOB is one of
  save FROM TO         a file opened and saved anew
  fill FROM TO LANG    the template opened, a row typed into its first sheet
                       behind the examples, saved

A profile of its own, so that it neither needs nor disturbs the user's.
"""
import pathlib
import subprocess
import sys
import tempfile
import time

import uno
from com.sun.star.beans import PropertyValue
from com.sun.star.connection import NoConnectException


class Office:
    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        pipe = "velmo" + pathlib.Path(self.folder.name).name
        self.process = subprocess.Popen(
            ["soffice", "--headless", "--norestore", "--nologo",
             f"-env:UserInstallation={pathlib.Path(self.folder.name).as_uri()}",
             f"--accept=pipe,name={pipe};urp"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        resolver = uno.getComponentContext().ServiceManager.createInstance(
            "com.sun.star.bridge.UnoUrlResolver")
        for _ in range(1200):
            try:
                context = resolver.resolve(f"uno:pipe,name={pipe};urp;StarOffice.ComponentContext")
                break
            except NoConnectException:
                if self.process.poll() is not None:
                    sys.exit("soffice ended")
                time.sleep(0.1)
        else:
            sys.exit("soffice did not answer")
        self.desktop = context.ServiceManager.createInstance("com.sun.star.frame.Desktop")
        return self

    def __exit__(self, *_):
        try:
            self.desktop.terminate()
        except Exception:  # the connection ends with it
            pass
        try:
            self.process.wait(60)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.folder.cleanup()

    def open(self, path):
        hidden = PropertyValue(Name="Hidden", Value=True)
        return self.desktop.loadComponentFromURL(
            pathlib.Path(path).resolve().as_uri(), "_blank", 0, (hidden,))

    def save(self, document, path):
        xlsx = PropertyValue(Name="FilterName", Value="Calc MS Excel 2007 XML")
        document.storeToURL(pathlib.Path(path).resolve().as_uri(), (xlsx,))
        document.close(True)


def fill(office, source, target, language):
    """As the keyboard has it: numbers become numbers and dates become dates."""
    words = {"zh": ("普通面积", "亩", "米", "元"),
             "en": ("Common Area", "MU", "Meter", "YUAN")}[language]
    mode, area_unit, length_unit, currency = words
    measurement = ["3", "UTC+08:00", "2026-03-05 7:08:09", "2026-03-05 08:09:10", "24081530", mode,
                   "", "1.5", area_unit, "2.5", "1667.5", length_unit, "123.4", currency, "1.1",
                   "100000", "WGS - 84", "typed by hand"]
    points = [["1", "2026-03-05 07:08:09", "126.65", "45.75", "120.5", "0.8"],
              ["2", "2026-03-05 07:08:10", "126.6505", "45.751", "121", "0.9"],
              ["3", "2026-03-05 07:08:11", "126.651", "45.7505", "122.25", "1.1"]]
    document = office.open(source)
    sheet = document.Sheets.getByIndex(0)
    formats = document.NumberFormats
    code = "YYYY-MM-DD HH:MM:SS"
    date_format = formats.queryKey(code, document.CharLocale, False)
    if date_format < 0:
        date_format = formats.addNew(code, document.CharLocale)
    first_free = 7
    for row, point in enumerate(points):
        texts = (measurement if row == 0 else [""] * len(measurement)) + point
        for column, text in enumerate(texts):
            if text:
                cell = sheet.getCellByPosition(column, first_free + row)
                cell.setFormula(text)
                if text.startswith("2026-"):
                    cell.NumberFormat = date_format
    office.save(document, target)


def main():
    words = sys.argv[1:]
    with Office() as office:
        while words:
            job = words.pop(0)
            if job == "save":
                office.save(office.open(words.pop(0)), words.pop(0))
            elif job == "fill":
                fill(office, words.pop(0), words.pop(0), words.pop(0))
            else:
                sys.exit(__doc__)


main()
