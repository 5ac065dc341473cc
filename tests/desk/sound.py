"""A private sound server with one microphone, which delivers synthesised speech or a tone, otherwise silence."""

import signal
import threading
import time
import wave

import numpy

from desk.waiting import TIMEOUT_S, wait_for

# The program does not accept a sink's monitor as a microphone, so the monitor is remapped to a source.
MICROPHONE = {"null-sink": "sink_name=speakers rate=16000 channels=1", "sine": "sink=speakers frequency=1003",
              "remap-source": "master=speakers.monitor source_name=microphone"}
FORMAT = "--raw", "--format=s16le", "--channels=1"


class SoundServer:
    """Starts with the microphone plugged in. With `tone`, it delivers 1003 Hz continuously, and a killed server is
    started again, as a session does; the file that ROTIKA_SOUND_PID names holds the current process id."""

    def __init__(self, screen, tone=False):
        self.screen = screen
        self.modules = {name: words for name, words in MICROPHONE.items() if tone or name != "sine"}
        self.socket, self.pid_file = screen.folder / "sound", screen.folder / "sound.pid"
        screen.environment |= {"PULSE_SERVER": f"unix:{self.socket}", "ROTIKA_SOUND_PID": str(self.pid_file)}
        self._launch()
        if tone:
            threading.Thread(target=self._restart_when_killed, daemon=True).start()

    def _launch(self):
        self.socket.unlink(missing_ok=True)
        # Without the shared ring buffer it keeps sending while the client does not read, as other servers do.
        self.server = self.screen.launch(
            "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
            f"--load=module-native-protocol-unix auth-anonymous=1 srbchannel=0 socket={self.socket}")
        self.pid_file.write_text(f"{self.server.pid}\n")
        # The socket file exists shortly before the server listens.
        wait_for("the sound server", lambda: self.screen.launch("pactl", "info").wait(TIMEOUT_S) == 0)
        self.plug_in()

    def _restart_when_killed(self):
        while self.server.wait() == -signal.SIGKILL and self.screen.folder.exists():
            self._launch()

    def plug_in(self):
        for name, words in self.modules.items():
            self.screen.run("pactl", "load-module", f"module-{name}", *words.split())
        # Fed with silence, since an idle microphone delivers its first sound seconds late.
        self.screen.launch("pacat", "--latency-msec=30", *FORMAT, "--rate=16000", "/dev/zero")

    def unplug(self):
        """Removes the microphone, even while it is in use."""
        self.screen.run("pactl", "unload-module", "module-null-sink")  # this unloads the remapped source too

    def say(self, text, voice="pl"):
        """Plays the text by an espeak-ng voice, such as "pl+f4", to its end. Returns the time of its last sound."""
        said = self.screen.folder / "said"
        self.screen.run("espeak-ng", "-v", voice, "-w", str(said), text)
        with wave.open(str(said)) as file:
            rate, samples = file.getframerate(), numpy.frombuffer(file.readframes(file.getnframes()), "<i2")
        last = numpy.flatnonzero(abs(samples.astype(int)) > 200)[-1]  # the last audible sample
        said.write_bytes(samples[:last + 1].tobytes())
        # The server buffers all of it before it plays: a busy machine must not cause gaps.
        self.screen.run("pacat", "--latency-msec=20000", *FORMAT, f"--rate={rate}", str(said))
        return time.monotonic()
