"""Voice, installed from zip archives as the makers of the speech library and of the models offer them."""

import json
import zipfile

from desk.accessible import Program
from desk.desk import field
from desk.device import Device
from desk.sound import SoundServer
from desk.waiting import wait_for

MODEL = "vosk-model-small-pl-0.22"


def make_archive(path, top, source):
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as made:
        for file in sorted(each for each in source.rglob("*") if each.is_file() and "tobii" not in each.name):
            made.write(file, f"{top}/{file.relative_to(source)}")
    return path


class Installer:
    def __init__(self, desk):
        self.desk, self.executable = desk, desk.folder / desk.target.executable

    def launch(self, *archives):
        paths = map(self.desk.target.path_text, archives)
        return self.desk.screen.launch(*self.desk.target.command(self.executable, "--install-voice", *paths),
                                       variables=self.desk.variables)

    def expect_message(self, *texts):
        """Waits for the result, and closes it."""
        wait_for("the result", lambda: self.desk.is_in_front("Głos"), 60)
        if self.desk.target.is_accessible:
            box = Program(self.desk.screen, "Rotika").window("Głos")
            for text in texts:
                wait_for(text, lambda: box.find_shown(lambda widget: text in widget.name()))
        self.desk.keyboard.tap("Return")
        wait_for("the main window", lambda: self.desk.is_in_front("Rotika"))

    def files(self):
        return {file.relative_to(self.desk.folder): file.read_bytes()
                for file in self.desk.folder.rglob("*") if file.is_file()}


def test_voice_is_installed_from_archives_only_if_they_are_what_they_should_be(desk):
    SoundServer(desk.screen)
    speech, folder = Device(desk, "speech"), desk.screen.folder
    library = make_archive(folder / "Głos ż.zip", "vosk-x86_64-0.3.45", desk.doubles / "complete")
    other = make_archive(folder / "npm.zip", "vosk-0.3.39", desk.speech / "runtime" / desk.target.runtime_folder)
    model = make_archive(folder / "model.zip", MODEL, desk.speech / "model")
    (folder / "half.zip").write_bytes(model.read_bytes()[:-100_000])
    desk.prepare(field("a"), voiceDllPath="missing", ownKey=7)
    installer, before = Installer(desk), None
    desk.program = installer.launch(model, other)  # no copy is running
    installer.expect_message("vosk_recognizer_set_grm", "Niczego nie zmieniono")
    before = installer.files()
    for archive, reason in (("half.zip", "nie jest kompletne"), ("missing.zip", "Nie można otworzyć")):
        assert installer.launch(library, folder / archive).wait(30) == 0  # passed on to the running copy
        installer.expect_message(reason)
    assert installer.files() == before and not list(desk.folder.glob(".*"))

    speech.write("hangs model_new")
    installer.launch(model, library)
    speech.wait_for_call("model_new")
    desk.kill_program()  # as the end of the process by a defective library
    speech.write()
    desk.start_program()
    wait_for("the installation to be taken back", lambda: not list(desk.folder.glob(".*")))
    assert installer.files() == before

    installer.launch(model, library)
    installer.expect_message("są zainstalowane", "aktywny")
    wait_for("the work folder to be removed", lambda: not list(desk.folder.glob(".*")))
    after = installer.files()
    assert json.loads(desk.read("config.json")).items() >= {
        "voiceEnabled": True, "voiceDllPath": "", "ownKey": 7}.items()
    assert {str(name) for name in after.keys() - before.keys()} >= {speech.library.name}
    assert {name.as_posix(): text for name, text in after.items() if name.parts[0] == MODEL} == {
        f"{MODEL}/{file.relative_to(desk.speech / 'model')}": file.read_bytes()
        for file in (desk.speech / "model").rglob("*") if file.is_file()}
    speech.wait_for_call("model_new", 2)

    installer.launch(library, model)  # the loaded library is replaced too
    installer.expect_message("ponownym uruchomieniu")
    speech.wait_for_call("model_new", 3)
    assert list(desk.folder.glob(".*"))  # on trial until the library itself has been loaded
    desk.end_program()
    desk.start_program()
    speech.wait_for_call("model_new", 4)
    wait_for("the work folder to be removed", lambda: not list(desk.folder.glob(".*")))
    assert installer.files() == after
