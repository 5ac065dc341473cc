"""A small feed-forward net that classifies a frame's phoneme, trained on spoken word strings."""

import numpy as np

import sound
from speech import SILENCE, VOICES

OFFSETS = [-9, -6, -4, -2, -1, 0, 1, 2, 4, 6, 9]  # the net's input frames, relative to the current one
BATCH = 512


def utterance(speaker, random, text):
    """16 kHz sound with silence before and after, and pairs of a phoneme and its start in seconds."""
    voice = "pl+" + random.choice(VOICES)
    rate, pitch, pitch_range = (int(random.uniform(*limits)) for limits in ((110, 250), (5, 95), (20, 90)))
    spoken, events = speaker.speak(text, voice, rate, pitch, pitch_range)
    x = sound.resample(spoken, speaker.rate)
    lead, tail = (int(random.uniform(*limits) * sound.RATE) for limits in ((0.1, 0.8), (0.2, 1)))
    marks = [(name, sample / speaker.rate + lead / sound.RATE) for name, sample in events]
    marks = [(SILENCE, 0.0), *marks, (SILENCE, (lead + len(x)) / sound.RATE)]
    return np.concatenate([np.zeros(lead), x, np.zeros(tail)]), marks


def corpus(speaker, count, index, words, others, random):
    """Features of `count` utterances; for each frame the rows of the net's input, and its phoneme (-1: none)."""
    all_features, rows, labels, start = [], [], [], 0
    for k in range(count):
        pool = words if random.random() < 0.6 else others if random.random() < 0.7 else words + others
        x, marks = utterance(speaker, random, " ".join(random.choice(pool, size=random.integers(1, 5))))
        if k % 40 == 0:
            x, marks = sound.noise(len(x), random) * 10 ** random.uniform(0, 3.3), marks[:1]
        elif k % 40 == 1:
            x, marks = np.zeros(sound.RATE), marks[:1]
        elif k % 8:
            x = sound.disturb(x, random)
        found = sound.features(np.clip(np.round(x), -32768, 32767))
        centres = np.arange(len(found)) * sound.FRAME_SECONDS + 0.0125
        at = np.searchsorted([second for _, second in marks], centres, side="right") - 1
        labels.append(np.array([index.get(name, -1) for name, _ in marks])[at])
        rows.append(np.clip(np.arange(len(found))[:, None] + OFFSETS, 0, len(found) - 1) + start)
        all_features.append(found)
        start += len(found)
    return np.concatenate(all_features), np.concatenate(rows), np.concatenate(labels)


def forward(x, weights, biases):
    """The layers' activations, and the log probabilities of the classes."""
    values = [x]
    for i, (w, b) in enumerate(zip(weights, biases)):
        z = values[-1] @ w.T + b
        values.append(np.maximum(z, 0) if i < len(weights) - 1 else z)
    z = values[-1] - values[-1].max(1, keepdims=True)
    return values, z - np.log(np.exp(z).sum(1, keepdims=True))


def gradients(x, labels, weights, biases):
    values, logs = forward(x, weights, biases)
    g = np.exp(logs)
    g[np.arange(len(labels)), labels] -= 1
    g /= len(labels)
    for_weights, for_biases = [], []
    for i in reversed(range(len(weights))):
        for_weights.insert(0, g.T @ values[i])
        for_biases.insert(0, g.sum(0))
        g = (g @ weights[i]) * (values[i] > 0)
    return for_weights + for_biases, -logs[np.arange(len(labels)), labels].mean()


class Adam:
    def __init__(self, parameters, steps):
        self.parameters, self.steps, self.step = parameters, steps, 0
        self.means = [np.zeros_like(p) for p in parameters]
        self.squares = [np.zeros_like(p) for p in parameters]

    def update(self, slopes):
        self.step += 1
        rate = 0.002 * min(1, self.step / 200) * max(0.02, 1 - self.step / self.steps)
        for p, slope, mean, square in zip(self.parameters, slopes, self.means, self.squares):
            mean += 0.1 * (slope - mean)
            square += 0.001 * (slope * slope - square)
            change = mean / (1 - 0.9**self.step) / (np.sqrt(square / (1 - 0.999**self.step)) + 1e-7)
            p -= (rate * change).astype(np.float32)


def train(all_features, rows, labels, classes, hidden, epochs, random):
    """Pairs of weights and biases for unscaled features, and the relative frequency of each class."""
    mean, deviation = all_features.mean(0), all_features.std(0) + 1e-3
    scaled = (all_features - mean) / deviation
    sizes = [sound.CEPSTRA * len(OFFSETS), hidden, hidden, hidden, classes]
    weights = [(random.normal(size=(o, i)) * np.sqrt(2 / i)).astype(np.float32) for i, o in zip(sizes, sizes[1:])]
    biases = [np.zeros(size, np.float32) for size in sizes[1:]]
    known = np.flatnonzero(labels >= 0)
    adam = Adam(weights + biases, epochs * (len(known) // BATCH))
    for epoch in range(epochs):
        order, losses = random.permutation(known), []
        for k in range(0, len(order) - BATCH + 1, BATCH):
            some = order[k : k + BATCH]
            slopes, loss = gradients(scaled[rows[some]].reshape(BATCH, -1), labels[some], weights, biases)
            adam.update(slopes)
            losses.append(loss)
        print(f"epoch {epoch + 1} of {epochs}: loss {np.mean(losses):.3f}", flush=True)
    share = np.bincount(labels[known], minlength=classes) / len(known)
    first = weights[0] / np.tile(deviation, len(OFFSETS))
    biases[0] = biases[0] - first @ np.tile(mean, len(OFFSETS))
    return list(zip([first, *weights[1:]], biases)), share
