"""The model folder's files, in Kaldi's and OpenFst's formats.

Phone 1 is silence; phoneme i at a word's Beginning, End or Inside, or alone (Single), is phone 2 + 4i to 5 + 4i,
and all four share output i + 1. Each has one state: transition 2p - 1 stays in phone p, 2p enters it. The last
phoneme is that of "[unk]": it scores the same on every frame, whatever the sound.
"""

import pathlib
import struct

import numpy as np

from sound import CEPSTRA
from training import OFFSETS

UNKNOWN_PHONEME = "?"
UNKNOWN_WORD_PHONEMES = 4  # at least 120 ms

MFCC_OPTIONS = """\
--sample-frequency=16000
--use-energy=false
--num-mel-bins=40
--num-ceps=40
--low-freq=20
--high-freq=-400
--dither=0
"""
DECODER_OPTIONS = """\
--min-active=200
--max-active=3000
--beam=10.0
--lattice-beam=2.0
--acoustic-scale=0.5
--frame-subsampling-factor=3
--endpoint.silence-phones=1
--endpoint.rule2.min-trailing-silence=0.5
--endpoint.rule3.min-trailing-silence=0.75
--endpoint.rule4.min-trailing-silence=1.0
"""


def phone(phoneme, place):
    return 2 + 4 * phoneme + "BEIS".index(place)


def places(length):
    return "S" if length == 1 else "B" + "I" * (length - 2) + "E"


# ---- word graph


def word_graph(lexicon, words, index):
    """Arcs (transition, word, cost, next) of each state: any word after any other, with optional silence between."""
    between, silent = 0, 1
    arcs = [[(2, 0, 0.69, silent)], [(1, 0, 0.0, silent)]]
    for word, said in lexicon.items():
        for k, (name, place) in enumerate(zip(said, places(len(said)))):
            p, here = phone(index[name] - 1, place), len(arcs)
            arcs.append([(2 * p - 1, 0, 0.0, here)])
            if k > 0:
                arcs[here - 1].append((2 * p, 0, 0.0, here))
            else:
                arcs[between].append((2 * p, words[word], 3.69, here))
                arcs[silent].append((2 * p, words[word], 3.0, here))
        arcs[-1].append((0, 0, 0.0, between))
    return arcs, {between: 0.0, silent: 0.0}


def fst(arcs, final):
    """OpenFst's 'vector' type. The recogniser composes it with its grammar, hence the order by output label."""

    def text(s):
        return struct.pack("<i", len(s)) + s

    out = struct.pack("<i", 2125659606) + text(b"vector") + text(b"standard")
    out += struct.pack("<iiQqqq", 2, 0, 3, 0, len(arcs), sum(map(len, arcs)))
    for state, leaving in enumerate(arcs):
        out += struct.pack("<fq", final.get(state, float("inf")), len(leaving))
        for arc in sorted(leaving, key=lambda a: (a[1], a[0])):
            out += struct.pack("<iifi", *arc)
    return out


# ---- acoustic model


def vector(v):
    return " [ " + " ".join(f"{x:.6g}" for x in v) + " ]\n"


def matrix(m):
    return " [\n" + "\n".join(" ".join(f"{x:.5g}" for x in row) for row in m) + " ]\n"


def transition_model(phones):
    every = range(1, phones + 1)
    states = "<State> 0 <PdfClass> 0 <Transition> 0 0.5 <Transition> 1 0.5 </State>\n<State> 1 </State>\n"
    topology = f"<ForPhones>\n{' '.join(map(str, every))}\n</ForPhones>\n{states}"
    triples = "".join(f"{p} 0 {(p + 2) // 4}\n" for p in every)
    return (
        f"<TransitionModel>\n<Topology>\n<TopologyEntry>\n{topology}</TopologyEntry>\n</Topology>\n"
        f"<Triples> {phones}\n{triples}</Triples>\n"
        f"<LogProbs>\n{vector([0] + [-0.693147] * (2 * phones))}</LogProbs>\n</TransitionModel>\n"
    )


def components(layers, share, unknown_score):
    """Pairs of a component's kind and its text: the net, then the conversion of probabilities to likelihoods."""

    def affine(w, b):
        return "FixedAffineComponent", f"<LinearParams> {matrix(w)}<BiasParams> {vector(b)}"

    for i, (w, b) in enumerate(layers):
        yield affine(w, b)
        kind = "RectifiedLinear" if i < len(layers) - 1 else "LogSoftmax"
        yield kind + "Component", f"<Dim> {len(b)} <ValueAvg> [ ]\n<DerivAvg> [ ]\n<Count> 0 "
    n = len(share)
    yield affine(np.vstack([np.eye(n), np.zeros(n)]), np.append(-np.log(share), unknown_score))


def acoustic_model(layers, share, unknown_score):
    phones = 1 + 4 * len(share)
    source = "Append(" + ", ".join(f"Offset(input, {k})" if k else "input" for k in OFFSETS) + ")"
    nodes, body, count = f"input-node name=input dim={CEPSTRA}\n", "", 0
    for count, (kind, text) in enumerate(components(layers, share, unknown_score), 1):
        name = f"c{count}"
        nodes += f"component-node name={name} component={name} input={source}\n"
        body += f"<ComponentName> {name} <{kind}> {text}</{kind}>\n"
        source = name
    # The blank after <Nnet3> and the empty line after the nodes are part of the format.
    return (
        transition_model(phones) + f"<Nnet3> \n{nodes}output-node name=output input={source} objective=linear\n\n"
        f"<NumComponents> {count}\n{body}</Nnet3>\n"
        f"<LeftContext> {-min(OFFSETS)} <RightContext> {max(OFFSETS)} <Priors>  [ ]\n"
    )


def write_model(folder, lexicon, phonemes, layers, share, unknown_score=1.4, silence_share=0.05):
    folder = pathlib.Path(folder)
    index = {name: i for i, name in enumerate(["SIL", *phonemes, UNKNOWN_PHONEME])}
    lexicon = {**lexicon, "[unk]": (UNKNOWN_PHONEME,) * UNKNOWN_WORD_PHONEMES}
    words = {word: i for i, word in enumerate(["<eps>", *lexicon])}
    share = np.maximum(share, 0.005)
    share[0] = silence_share
    count = len(words)
    first_unused_transition = 2 * (1 + 4 * (len(index) - 1)) + 1
    boundaries = [
        f"{phone(i, place)} {name}\n"
        for i in range(len(index) - 1)
        for place, name in zip("BEIS", ("begin", "end", "internal", "singleton"))
    ]
    any_word = [[(i, i, float(np.log(count)), 0) for i in range(1, count)]], {0: float(np.log(count))}
    files = {
        "am/final.mdl": acoustic_model(layers, share, unknown_score),
        "conf/mfcc.conf": MFCC_OPTIONS,
        "conf/model.conf": DECODER_OPTIONS,
        "graph/words.txt": "".join(f"{word} {i}\n" for word, i in words.items()),
        "graph/disambig_tid.int": f"{first_unused_transition}\n",
        "graph/phones/word_boundary.int": "1 nonword\n" + "".join(boundaries),
        "graph/HCLr.fst": fst(*word_graph(lexicon, words, index)),
        "graph/Gr.fst": fst(*any_word),
    }
    for name, content in files.items():
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
