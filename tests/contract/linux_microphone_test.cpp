// What is not taken for a microphone: the computer's own sound, which the server offers where there is none.

#include "listening.h"

namespace {

TEST(LinuxMicrophone, OneThatIsLostIsHeardAgainAndTheSpeakersAreNoneUnlessTheUserNamesThem) {
    const MicrophoneHandle microphone = openMicrophone();
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    EXPECT_TRUE(isHeard(*microphone));
    const std::string plugIn =
        "pactl load-module module-remap-source master=room.monitor source_name=microphone";
    EXPECT_TRUE(onHost("pactl unload-module module-remap-source"));
    expectQuiet(*microphone, 1);
    EXPECT_EQ(openMicrophone(), nullptr);
    ::setenv("PULSE_SOURCE", "room.monitor", 1);
    EXPECT_NE(openMicrophone(), nullptr);
    ::unsetenv("PULSE_SOURCE");
    EXPECT_TRUE(onHost(plugIn));
    EXPECT_TRUE(isHeard(*microphone));

    // The server remembers where somebody has moved the program.
    EXPECT_TRUE(onHost("pactl load-module module-stream-restore"));
    EXPECT_TRUE(onHost(
        "pactl move-source-output $(pactl list short source-outputs | tail -n 1 | cut -f 1) room.monitor"));
    EXPECT_NE(openMicrophone(), nullptr);
    EXPECT_TRUE(isHeard(*microphone));

    EXPECT_TRUE(onHost("pactl unload-module module-null-sink")); // tone and microphone end with it
    expectQuiet(*microphone, 1);
    EXPECT_TRUE(onHost("pactl load-module module-null-sink sink_name=room rate=16000 channels=1 && "
                       "pactl load-module module-sine sink=room frequency=1000 && " +
                       plugIn));
    EXPECT_TRUE(isHeard(*microphone));
}

} // namespace
