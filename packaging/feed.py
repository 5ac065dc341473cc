#!/usr/bin/python3
"""The update feed and the check sums of a release, signed with an Ed25519 key by openssl.

feed.py key <private key>                         prints the public key as the program and the feed write it
feed.py make <release> <version> <address> <private key>
feed.py check <release> <public key>              fails on any file that is missing, added or changed since

<release> is the folder of the release's files, <address> that of appcast.xml: the installer lies beside it."""

import base64
import email.utils
import hashlib
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml
from pathlib import Path
from urllib.parse import urljoin

import release_notes

SPARKLE = "http://www.andymatuschak.org/xml-namespaces/sparkle"  # the format's own namespace
FEED, SUMS, SIGNATURE = "appcast.xml", "SHA256SUMS", "SHA256SUMS.sig"
KEY_HEADER = bytes.fromhex("302a300506032b6570032100")  # of an Ed25519 public key in DER, before its 32 bytes
# The installer then asks nothing and starts the program again: the user may have no other way to press a button.
INSTALLER_ARGUMENTS = "/S /RESTART"


def openssl(*words, data=None):
    return subprocess.run(["openssl", *map(str, words)], input=data, capture_output=True, check=True).stdout


def public_key(private):
    return base64.b64encode(openssl("pkey", "-in", private, "-pubout", "-outform", "DER")[len(KEY_HEADER):]).decode()


def sign(file, private):
    """In base64, as the feed and the signature of the sums have it."""
    return base64.b64encode(openssl("pkeyutl", "-sign", "-inkey", private, "-rawin", "-in", file)).decode()


def is_signed(file, signature, public):
    with tempfile.TemporaryDirectory() as folder:
        key, signed = Path(folder, "key"), Path(folder, "signature")
        key.write_bytes(KEY_HEADER + base64.b64decode(public))
        signed.write_bytes(base64.b64decode(signature))
        try:
            openssl("pkeyutl", "-verify", "-pubin", "-keyform", "DER", "-inkey", key, "-rawin", "-in", file,
                    "-sigfile", signed)
        except subprocess.CalledProcessError:
            return False
    return True


def make_feed(release, version, address, private):
    installer = release / f"rotika-{version}-setup.exe"
    xml.register_namespace("sparkle", SPARKLE)
    feed = xml.Element("rss", version="2.0")
    channel = xml.SubElement(feed, "channel")
    xml.SubElement(channel, "title").text = "Rotika"
    xml.SubElement(channel, "language").text = "pl"
    item = xml.SubElement(channel, "item")
    xml.SubElement(item, "title").text = f"Rotika {version}"
    newest = release_notes.read_releases(release_notes.CHANGES.read_text(encoding="utf-8"))[0]
    xml.SubElement(item, "description").text = release_notes.html(newest)
    xml.SubElement(item, "pubDate").text = email.utils.format_datetime(newest.date)
    xml.SubElement(item, "enclosure", {
        "url": urljoin(address, installer.name), "length": str(installer.stat().st_size),
        "type": "application/octet-stream", f"{{{SPARKLE}}}version": version, f"{{{SPARKLE}}}os": "windows-x64",
        f"{{{SPARKLE}}}installerArguments": INSTALLER_ARGUMENTS,
        f"{{{SPARKLE}}}edSignature": sign(installer, private)})
    xml.indent(feed)
    xml.ElementTree(feed).write(release / FEED, encoding="utf-8", xml_declaration=True)


def sums_of(release):
    files = sorted(file for file in release.rglob("*") if file.is_file() and file.name not in (SUMS, SIGNATURE))
    return "".join(f"{hashlib.sha256(file.read_bytes()).hexdigest()}  {file.relative_to(release)}\n" for file in files)


def check(release, public):
    """What is wrong with the release, as texts."""
    if sums_of(release) != (release / SUMS).read_text(encoding="utf-8"):
        yield f"{SUMS} does not match the files"
    if not is_signed(release / SUMS, (release / SIGNATURE).read_text(encoding="ascii"), public):
        yield f"{SUMS} does not have the signature of this key"
    enclosures = list(xml.parse(release / FEED).iter("enclosure"))
    if len(enclosures) != 1:
        yield f"{FEED} offers {len(enclosures)} files instead of one"
    for enclosure in enclosures:
        file = release / enclosure.get("url").rpartition("/")[2]
        if not file.is_file() or int(enclosure.get("length")) != file.stat().st_size:
            yield f"{file.name} is missing or has another size than {FEED} says"
        elif not is_signed(file, enclosure.get(f"{{{SPARKLE}}}edSignature"), public):
            yield f"{file.name} does not have the signature of this key"


def make(release, version, address, private):
    make_feed(release, version, address, private)
    (release / SUMS).write_text(sums_of(release), encoding="utf-8")
    (release / SIGNATURE).write_text(sign(release / SUMS, private) + "\n", encoding="ascii")


def main(command=None, *words):
    if command == "key" and len(words) == 1:
        print(public_key(words[0]))
    elif command == "make" and len(words) == 4:
        make(Path(words[0]), *words[1:])
    elif command == "check" and len(words) == 2:
        if faults := list(check(Path(words[0]), words[1])):
            sys.exit("\n".join(faults))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(*sys.argv[1:])
