"""Sound at 16 kHz: simulated recording conditions for training, and the recogniser's features."""

import numpy as np

RATE = 16000
CEPSTRA = 40
FRAME_SECONDS = 0.01
LOUDEST, QUIETEST = 3.7, 1.9  # of speech: decimal logarithm of the RMS value


def resample(x, rate):
    count = round(len(x) * RATE / rate)
    spectrum, wanted = np.fft.rfft(x), np.zeros(count // 2 + 1, complex)
    common = min(len(spectrum), len(wanted))
    wanted[:common] = spectrum[:common]
    slope = np.clip((7900 - np.arange(len(wanted)) * RATE / count) / 300, 0, 1)
    return np.fft.irfft(wanted * slope, count) * count / len(x)


def noise(count, random):
    """White, pink, brown or band noise with an RMS value of 1."""
    spectrum = np.fft.rfft(random.normal(size=count))
    f = np.arange(len(spectrum)) + 1.0
    band = np.exp(-(((np.log(f / len(f)) - random.uniform(-4, -0.5)) / 0.6) ** 2)) + 0.05
    y = np.fft.irfft(spectrum * (1, f**-0.5, 1 / f, band)[random.integers(4)], count)
    return y / (y.std() + 1e-9)


def colour(x, random):
    """Applies a random smooth frequency response."""
    spectrum = np.fft.rfft(x)
    places = np.linspace(0, 1, len(spectrum))
    gain = np.interp(places, np.linspace(0, 1, 6) ** 2, 4 * random.normal(size=6))
    return np.fft.irfft(spectrum * 10 ** (gain / 20), len(x))


def in_room(x, random):
    count = int(random.uniform(0.03, 0.15) * RATE)
    echo = random.normal(size=count) * np.exp(-6 * np.arange(count) / count) * random.uniform(0.02, 0.1)
    echo[0] = 1
    size = 1 << (len(x) + count).bit_length()
    return np.fft.irfft(np.fft.rfft(x, size) * np.fft.rfft(echo, size), size)[: len(x)]


def disturb(x, random):
    if random.random() < 0.6:
        x = colour(x, random)
    if random.random() < 0.3:
        x = in_room(x, random)
    level = 10 ** random.uniform(QUIETEST, LOUDEST)
    x = x * level / np.sqrt((x**2).mean() + 1e-9)
    if random.random() < 0.85:
        x = x + noise(len(x), random) * level * 10 ** (-random.uniform(5, 40) / 20)
    return x


# Kaldi's MFCC features with the options of kaldi_model.MFCC_OPTIONS: frames of 25 ms every 10 ms.


def _tables():
    def mel(hertz):
        return 1127 * np.log(1 + hertz / 700)

    at, step = mel(np.arange(256) * 31.25), (mel(7600.0) - mel(20.0)) / (CEPSTRA + 1)
    left = mel(20.0) + step * np.arange(CEPSTRA)[:, None]
    bank = np.clip(np.minimum(at - left, left + 2 * step - at) / step, 0, None)
    k = np.arange(CEPSTRA)[:, None]
    cosines = np.cos(np.pi / CEPSTRA * (np.arange(CEPSTRA) + 0.5) * k)
    transform = np.sqrt(np.where(k == 0, 1, 2) / CEPSTRA) * cosines * (1 + 11 * np.sin(np.pi * k / 22))
    window = (0.5 - 0.5 * np.cos(2 * np.pi * np.arange(400) / 399)) ** 0.85
    return bank.T, transform.T, window


BANK, TRANSFORM, WINDOW = _tables()


def features(x):
    """One row of CEPSTRA for each frame of a sound in 16-bit units."""
    frames = np.lib.stride_tricks.sliding_window_view(x, 400)[::160]
    frames = frames - frames.mean(1, keepdims=True)
    frames = frames - 0.97 * np.concatenate([frames[:, :1], frames[:, :-1]], 1)
    power = np.abs(np.fft.rfft(frames * WINDOW, 512))[:, :256] ** 2
    smallest = 1.1920929e-07  # Kaldi's
    return (np.log(np.maximum(power @ BANK, smallest)) @ TRANSFORM).astype(np.float32)
