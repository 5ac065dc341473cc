"""Voice and gaze with doubles of their libraries, which are missing, fail, hang, or report scripted speech and gaze;
and a microphone that is plugged in and out."""

from itertools import groupby

from desk.desk import CENTRE, LAYER, field, field_point
from desk.device import Device
from desk.sound import SoundServer
from desk.waiting import wait_for

FAILED = "błąd inicjalizacji"
LISTENING = ["model_new", "recognizer_new_grm", "accept_waveform"]
CONNECTED = ["api_create", "enumerate_local_device_urls", "device_create", "gaze_point_subscribe"]
# Variant of the library, its script, the status, the calls at the start, and those at the end.
VOICE_STARTS = [
    ("without_required", "", FAILED, [], []),
    ("complete", "fails model_new", "brak katalogu modelu języka", LISTENING[:1], []),
    ("complete", "faults recognizer_new_grm", FAILED, [*LISTENING[:2], "model_free"], []),
    ("without_optional", "", "aktywny", LISTENING, ["recognizer_free", "model_free"]),
    ("complete", "hangs model_new", "ładowanie modelu…", LISTENING[:1], []),
    ("nowhere", "", "brak {}", [], [])]
GAZE_STARTS = [
    ("without_required", "", FAILED, [], []),
    ("complete", "fails enumerate_local_device_urls", "nie wykryto urządzenia", [*CONNECTED[:2], "api_destroy"], []),
    ("complete", "fails gaze_point_subscribe", FAILED, [*CONNECTED, "device_destroy", "api_destroy"], []),
    ("without_optional", "", "aktywny", CONNECTED, ["device_destroy", "api_destroy"]),
    ("complete", "hangs api_create", "szukanie urządzenia…", CONNECTED[:1], []),
    ("nowhere", "", "brak {} (zainstaluj oprogramowanie Tobii)", [], [])]


def calls(library):
    """Names of the calls, repeated ones once."""
    return [name for name, _ in groupby(line.split()[0] for line in library.log())]


def test_each_failure_shows_its_status_frees_its_resources_and_allows_a_clean_exit(desk):
    SoundServer(desk.screen)
    for starts in zip(VOICE_STARTS, GAZE_STARTS, strict=True):
        devices = [Device(desk, kind, variant, script)
                   for kind, (variant, script, *_) in zip(("speech", "gaze"), starts)]
        desk.prepare(field("a"), **devices[0].settings, **devices[1].settings)
        desk.start_program()
        for device, (_, _, status, begun, _) in zip(devices, starts):
            wait_for(f"{begun} instead of {calls(device)}", lambda: calls(device) == begun)
            device.wait_for_status(status.format(device.library.name))
        assert desk.target.ask_to_quit(desk.program) == 0
        for device, (*_, begun, ended) in zip(devices, starts):
            assert calls(device) == begun + ended


def test_with_one_switch_and_gaze_every_field_of_every_page_can_be_selected(desk):
    def look_at(x, y):
        left, top = ((whole - part) // 2 for whole, part in zip(desk.screen.size, LAYER))
        gaze.add(f"look {(left + x + .5) / desk.screen.size[0]} {(top + y + .5) / desk.screen.size[1]} 1")

    def open_wheel():
        look_at(*CENTRE)
        desk.recorder.mark()
        desk.open_wheel()

    gaze = Device(desk, "gaze", script="lost", gazeDwell=400)
    if not desk.target.input_is_exact:  # Wine knows keys by their keysyms
        desk.screen.run("xmodmap", "-e", "keycode 191 = F13")
    # The arrow turns a page per dwell as long as the gaze stays, so there are many pages of the second kind.
    blue = {"actions": [field("c", color="#3040E0"), field("d")]}
    desk.start(field("a", color="#E03030"), field("b"), more=[blue] * 20, toggleKey="F13", **gaze.settings)
    gaze.wait_for_call("device_reconnect", 2)
    gaze.write("rest")
    gaze.wait_for_status("aktywny")
    for number, key in enumerate("abcd"):
        open_wheel()
        if key == "c":
            look_at(556, 230)  # the right arrow
            x, y = field_point(0, 2, 75)
            wait_for("a blue field", lambda: desk.display.picture(desk.wheel().id)[y, x].argmax() == 2)
        look_at(*field_point(number % 2, 2))
        desk.wait_until_closed()
        desk.recorder.expect(key)
    open_wheel()
    desk.close_wheel()
    desk.recorder.expect()


def test_a_fault_or_a_malformed_answer_loses_only_its_own_buffer(desk):
    SoundServer(desk.screen)
    odd = ["fault", "answer null", "answer {}", 'answer {"text" : ""}', "answer ", "say [unk]", "say pokaż", "fault"]
    voice = Device(desk, "speech", script="\n".join(odd))
    desk.start(field("a"), **voice.settings)
    voice.add("say pokaż koło")
    desk.wait_until_open()
    assert voice.count("result") == len(odd) + 1 - odd.count("fault")
    assert {line for line in voice.log() if line.startswith("accept")} == {"accept_waveform 3200"}


def test_voice_starts_when_a_microphone_appears_and_resumes_after_its_loss(desk):
    sound = SoundServer(desk.screen)
    sound.unplug()
    voice = Device(desk, "speech")
    desk.start(field("a"), **voice.settings)
    voice.wait_for_status("brak mikrofonu")
    assert not voice.count("accept_waveform")
    for _ in range(2):
        sound.plug_in()
        voice.wait_for_status("aktywny")
        voice.add("say pokaż koło")
        desk.wait_until_open()
        desk.close_wheel()
        sound.unplug()
