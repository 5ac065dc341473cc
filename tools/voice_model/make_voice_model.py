#!/usr/bin/python3
"""Makes a small Polish model folder for the speech library, trained only on espeak-ng's speech.

For the tests: it recognises the words of words.txt as espeak-ng's voices speak them, and has not been tried with human
voices. espeak-ng speaks random word strings in many voices and reports when each phoneme begins; a small net learns to
classify a frame's phoneme; the net and a graph of the words are written in the library's formats. Needs numpy with an
optimised BLAS, and libespeak-ng.so.1. About three minutes on two cores.
"""

import argparse
import pathlib
import time

import numpy as np

import kaldi_model
import training
from speech import SILENCE, Speaker

HERE = pathlib.Path(__file__).parent


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", help="to write the model into")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--utterances", type=int, default=4000)
    parser.add_argument("--hidden", type=int, default=192, help="size of the net's hidden layers")
    parser.add_argument("--epochs", type=int, default=5)
    options = parser.parse_args()

    began = time.time()
    random, speaker = np.random.default_rng(options.seed), Speaker()
    words = (HERE / "words.txt").read_text(encoding="utf-8").split()
    others = (HERE / "other_words.txt").read_text(encoding="utf-8").split()  # outside the vocabulary
    lexicon = {word: speaker.pronounce(word) for word in words}
    phonemes = sorted({name for word in words + others for name in speaker.pronounce(word)})
    index = {name: i for i, name in enumerate([SILENCE, *phonemes])}
    found, rows, labels = training.corpus(speaker, options.utterances, index, words, others, random)
    print(f"{len(labels)} frames, {len(words)} words, {time.time() - began:.0f} s", flush=True)
    layers, share = training.train(found, rows, labels, len(index), options.hidden, options.epochs, random)
    kaldi_model.write_model(options.folder, lexicon, phonemes, layers, share)
    print(f"{options.folder} written, {time.time() - began:.0f} s")


if __name__ == "__main__":
    main()
