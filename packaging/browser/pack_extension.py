#!/usr/bin/env python3
"""Packs the browser extension for installation by the package.

    pack_extension.py EXTENSION_DIR KEY.pem OUT.crx OUT.xpi

OUT.crx is a CRX3 file signed with KEY.pem, so Chromium-family browsers give it
the id that the key (and the manifest's "key") stands for; OUT.xpi is the same
files zipped for Firefox. Both archives are reproducible: sorted names, fixed
dates and modes. Signing goes through the openssl command; only the standard
library is used otherwise.
"""

import hashlib
import io
import struct
import subprocess
import sys
import zipfile
from pathlib import Path


def zipped(folder):
    buffer = io.BytesIO()
    with zipfile.ZipFile(buffer, "w", zipfile.ZIP_DEFLATED) as archive:
        for path in sorted(p for p in folder.rglob("*") if p.is_file()):
            info = zipfile.ZipInfo(path.relative_to(folder).as_posix(), date_time=(1980, 1, 1, 0, 0, 0))
            info.external_attr = 0o644 << 16
            info.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(info, path.read_bytes())
    return buffer.getvalue()


def varint(value):
    out = bytearray()
    while True:
        byte = value & 0x7F
        value >>= 7
        if value:
            out.append(byte | 0x80)
        else:
            out.append(byte)
            return bytes(out)


def field(number, payload):
    """A length-delimited protocol-buffer field."""
    return varint(number << 3 | 2) + varint(len(payload)) + payload


def crx(archive, key):
    public = subprocess.run(["openssl", "pkey", "-in", str(key), "-pubout", "-outform", "DER"],
                            check=True, capture_output=True).stdout
    crx_id = hashlib.sha256(public).digest()[:16]
    signed_data = field(1, crx_id)  # SignedData.crx_id
    message = b"CRX3 SignedData\x00" + struct.pack("<I", len(signed_data)) + signed_data + archive
    signature = subprocess.run(["openssl", "dgst", "-sha256", "-sign", str(key)], input=message,
                               check=True, capture_output=True).stdout
    proof = field(1, public) + field(2, signature)  # AsymmetricKeyProof
    header = field(2, proof) + field(10000, signed_data)  # CrxFileHeader
    extension_id = "".join(chr(ord("a") + int(c, 16)) for c in crx_id.hex())
    return b"Cr24" + struct.pack("<II", 3, len(header)) + header + archive, extension_id


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    folder, key, crx_path, xpi_path = (Path(a) for a in sys.argv[1:])
    archive = zipped(folder)
    packed, extension_id = crx(archive, key)
    crx_path.write_bytes(packed)
    xpi_path.write_bytes(archive)
    print(f"packed {crx_path} (id {extension_id}) and {xpi_path}")


if __name__ == "__main__":
    main()
