# Prerequisites of the speech tests: the recogniser's real library and a model for it. Neither is part of the sources;
# both are prepared once, in the cache. Sourced after common.sh and packages.sh.

# The last version whose npm package contains binaries for both systems.
vosk_version=0.3.39
vosk_sha512=\
fe9583e8a2cbc55ff43eefd97e8bcd59a7450baab4d61cafcd8e434c4418e6bffa42540c83ad05698d5b8cad2a716378daba0d38e9d1ac1c6d00eaa4eff38693

# Where the tests expect both.
speech_folder=$root/build/speech

vosk_runtime() { printf '%s' "$cache/vosk-$vosk_version"; }
vosk_is_fetched() { [ -f "$(vosk_runtime)/linux-x86_64/libvosk.so" ] && [ -f "$(vosk_runtime)/win-x86_64/libvosk.dll" ]; }

# The name has a hash of the generator and the word lists: a change of either makes a new model.
voice_model() {
    local hash
    hash=$(cat "$root"/tools/voice_model/*.py "$root"/tools/voice_model/*.txt | sha256sum)
    printf '%s' "$cache/voice-model-${hash:0:12}"
}
voice_model_is_made() { [ -f "$(voice_model)/graph/Gr.fst" ]; }

# Fetched by the npm client, from the registry in its configuration.
need_vosk_runtime() {
    if ! vosk_is_fetched; then
        have npm || need_packages npm
        with_lock "$cache/vosk.lock" fetch_vosk
    fi
    link_speech runtime "$(vosk_runtime)"
}

fetch_vosk() {
    local work found
    vosk_is_fetched && return 0
    say "Fetching the speech library $vosk_version"
    work=$(mktemp -d "$cache/vosk.XXXXXX")
    (cd "$work" && npm pack --silent "vosk@$vosk_version" >/dev/null) || {
        rm -rf "$work"
        die "npm could not fetch the package vosk $vosk_version, which the speech tests need."
    }
    found=$(sha512sum "$work/vosk-$vosk_version.tgz")
    if [ "${found%% *}" != "$vosk_sha512" ]; then
        rm -rf "$work"
        die "The package vosk $vosk_version has an unexpected sha512: ${found%% *}."
    fi
    tar -xzf "$work/vosk-$vosk_version.tgz" -C "$work" package/lib/linux-x86_64 package/lib/win-x86_64
    rm -rf "$(vosk_runtime)"
    mv "$work/package/lib" "$(vosk_runtime)"
    rm -rf "$work"
}

need_voice_model() {
    if ! voice_model_is_made; then
        need_packages speech
        with_lock "$cache/voice-model.lock" make_voice_model
    fi
    link_speech model "$(voice_model)"
}

make_voice_model() {
    local made partial
    made=$(voice_model)
    partial=$made.partial
    voice_model_is_made && return 0
    say "Making a voice model, once; about four minutes"
    rm -rf "$partial"
    # The system's own Python, which has Debian's numpy.
    PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 "$root/tools/voice_model/make_voice_model.py" "$partial"
    mv "$partial" "$made"
}

link_speech() {
    mkdir -p "$speech_folder"
    ln -sfn "$2" "$speech_folder/$1"
}

need_speech() {
    need_vosk_runtime
    need_voice_model
}

show_speech() {
    if vosk_is_fetched; then
        printf '%-16s %s\n' "speech library" "$(vosk_runtime)"
    else
        printf '%-16s %s\n' "speech library" "not fetched yet; ./dev test does it, once"
    fi
    if voice_model_is_made; then
        printf '%-16s %s\n' "voice model" "$(voice_model), for the tests"
    else
        printf '%-16s %s\n' "voice model" "not made yet; ./dev test does it, once"
    fi
}

# show_speech_beside program library: whether the files for voice control are beside the program.
show_speech_beside() {
    local folder part
    [ -f "$1" ] || return 0
    folder=$(dirname "$1")
    for part in "$2" vosk-model-small-pl-0.22; do
        if [ -e "$folder/$part" ]; then
            printf '%-16s %s\n' "" "with $part"
        else
            printf '%-16s %s\n' "" "no $part beside it: voice stays off unless the settings name another place"
        fi
    done
}
