#!/usr/bin/env python3
"""Writes the installer's registration of zorvat.dll as a WiX include: the registry rows
that the DLL's own DllRegisterServer and the type library's registration write, read
from hosts/com/zorvat.idl, so that the IDL stays the one place where GUIDs are kept.

    registration.py --idl hosts/com/zorvat.idl --file FILE_ID --folder FOLDER_ID \
                    --syskind win32|win64 --out registration.wxi

For each coclass of the library (ProgID "zorvat.<Class>"):
  HKCR\\zorvat.<Class>                  = zorvat.<Class>, Clsid = {clsid}, CurVer = zorvat.<Class>.1
  HKCR\\zorvat.<Class>.1                = zorvat.<Class>, Clsid = {clsid}
  HKCR\\CLSID\\{clsid}                   = zorvat.<Class>
      InprocServer32 = the DLL's path, ThreadingModel = Apartment
      ProgID = zorvat.<Class>, VersionIndependentProgID = zorvat.<Class>
      TypeLib = {libid}, VERSION = <major>.<minor>, Programmable
For the library: HKCR\\TypeLib\\{libid}\\<major>.<minor> = <helpstring>, 0\\<syskind> = the
DLL's path, FLAGS, HELPDIR = the install folder; and for each dual interface
HKCR\\Interface\\{iid} = <name>, ProxyStubClsid(32) = the automation marshaller,
TypeLib = {libid} with Version.

The rows belong to the component that installs the DLL, so the installer writes them
into that component's registry view (32- or 64-bit) and removes them on uninstall.
"""

import argparse
import re
import sys
from xml.sax.saxutils import quoteattr

# The marshaller of oleautomation interfaces (PSOAInterface), as RegisterTypeLib writes it.
AUTOMATION_MARSHALLER = "{00020424-0000-0000-C000-000000000046}"
# The library's flags as RegisterTypeLib writes them for the type library that widl
# embeds in the DLL: LIBFLAG_FHASDISKIMAGE alone.
LIBRARY_FLAGS = "8"


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    return re.sub(r"//[^\n]*", "", text)


def attribute_blocks(text):
    """Yields (attributes, kind, name) for each [attributes] library/interface/coclass."""
    pattern = re.compile(r"\[([^\[\]]*)\]\s*(library|interface|coclass)\s+(\w+)", re.S)
    for match in pattern.finditer(text):
        yield match.group(1), match.group(2), match.group(3)


def attribute(attributes, name):
    match = re.search(r"\b" + name + r"\s*\(\s*\"?([^\")]*)\"?\s*\)", attributes)
    return match.group(1).strip() if match else None


def read_idl(path):
    with open(path, encoding="utf-8") as file:
        text = strip_comments(file.read())
    library = None
    interfaces = []
    classes = []
    for attributes, kind, name in attribute_blocks(text):
        uuid = attribute(attributes, "uuid")
        if uuid is None:
            continue
        guid = "{" + uuid.upper() + "}"
        if kind == "library":
            library = {
                "guid": guid,
                "version": attribute(attributes, "version") or "1.0",
                "helpstring": attribute(attributes, "helpstring") or name,
            }
        elif kind == "interface":
            interfaces.append({"guid": guid, "name": name})
        else:
            classes.append({"guid": guid, "name": name})
    if library is None or not classes:
        sys.exit(f"registration.py: no library with coclasses in {path}")
    return library, interfaces, classes


class Rows:
    def __init__(self):
        self.lines = []

    def value(self, key, value, name=None):
        name_attribute = f" Name={quoteattr(name)}" if name is not None else ""
        self.lines.append(
            f'  <RegistryValue Root="HKCR" Key={quoteattr(key)}{name_attribute} '
            f'Type="string" Value={quoteattr(value)}/>'
        )


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--idl", required=True)
    parser.add_argument("--file", required=True, help="the File Id of zorvat.dll")
    parser.add_argument("--folder", required=True, help="the Directory Id of its folder")
    parser.add_argument("--syskind", required=True, choices=["win32", "win64"])
    parser.add_argument("--out", required=True)
    arguments = parser.parse_args()

    library, interfaces, classes = read_idl(arguments.idl)
    dll = f"[#{arguments.file}]"
    libid = library["guid"]
    version = library["version"]
    rows = Rows()

    for coclass in classes:
        prog_id = "zorvat." + coclass["name"]
        clsid = coclass["guid"]
        rows.value(prog_id, prog_id)
        rows.value(prog_id + "\\Clsid", clsid)
        rows.value(prog_id + "\\CurVer", prog_id + ".1")
        rows.value(prog_id + ".1", prog_id)
        rows.value(prog_id + ".1\\Clsid", clsid)
        key = "CLSID\\" + clsid
        rows.value(key, prog_id)
        rows.value(key + "\\InprocServer32", dll)
        rows.value(key + "\\InprocServer32", "Apartment", name="ThreadingModel")
        rows.value(key + "\\ProgID", prog_id)
        rows.value(key + "\\VersionIndependentProgID", prog_id)
        rows.value(key + "\\TypeLib", libid)
        rows.value(key + "\\VERSION", version)
        rows.value(key + "\\Programmable", "")

    library_key = f"TypeLib\\{libid}\\{version}"
    rows.value(library_key, library["helpstring"])
    rows.value(library_key + "\\0\\" + arguments.syskind, dll)
    rows.value(library_key + "\\FLAGS", LIBRARY_FLAGS)
    rows.value(library_key + "\\HELPDIR", f"[{arguments.folder}]")
    for interface in interfaces:
        key = "Interface\\" + interface["guid"]
        rows.value(key, interface["name"])
        rows.value(key + "\\ProxyStubClsid", AUTOMATION_MARSHALLER)
        rows.value(key + "\\ProxyStubClsid32", AUTOMATION_MARSHALLER)
        rows.value(key + "\\TypeLib", libid)
        rows.value(key + "\\TypeLib", version, name="Version")

    with open(arguments.out, "w", encoding="utf-8") as file:
        file.write('<?xml version="1.0" encoding="utf-8"?>\n')
        file.write("<!-- Written by packaging/msi/registration.py from zorvat.idl. -->\n")
        file.write("<Include>\n")
        file.write("\n".join(rows.lines) + "\n")
        file.write("</Include>\n")


if __name__ == "__main__":
    main()
