"""The signed update feed: a release passes its check, and no file can be changed, exchanged or added afterwards."""

import re
import subprocess
import sys
from pathlib import Path

TOOL = Path(__file__).parents[2] / "packaging/feed.py"


def feed(*words):
    return subprocess.run([sys.executable, "-B", TOOL, *words], capture_output=True, text=True)


def make_key(file):
    subprocess.run(["openssl", "genpkey", "-algorithm", "ed25519", "-out", file], check=True)
    return feed("key", file).stdout.strip()


def test_only_what_was_signed_passes_the_check(tmp_path):
    release, key = tmp_path / "release", tmp_path / "key"
    (release / "source").mkdir(parents=True)
    installer, source = release / "rotika-0.9.1-setup.exe", release / "source/qt.tar"
    installer.write_bytes(b"installer")
    source.write_bytes(b"source")
    public, other = make_key(key), make_key(tmp_path / "other")
    make = "make", release, "0.9.1", "https://updates.example/appcast.xml", key
    assert feed(*make).returncode == 0 and feed("check", release, public).stderr == ""
    assert "signature" in feed("check", release, other).stderr
    source.write_bytes(b"changed")
    assert "SHA256SUMS does not match" in feed("check", release, public).stderr
    # An attacker has another key, and so can only leave the feed as it was or offer nothing.
    signed = (release / "appcast.xml").read_bytes()
    forge = *make[:-1], tmp_path / "other"
    assert feed(*forge).returncode == 0
    assert feed("check", release, public).stderr.count("does not have the signature") == 2
    (release / "appcast.xml").write_bytes(signed)
    installer.write_bytes(b"Installer")  # of the same length
    assert "setup.exe does not have the signature" in feed("check", release, public).stderr
    (release / "appcast.xml").write_bytes(re.sub(b"<enclosure.*?/>", b"", signed, flags=re.DOTALL))
    assert "instead of one" in feed("check", release, public).stderr
