#pragma once

#include "utils/product.h"

/// What help and manual page say in addition to the options.
namespace KAV::Host {

inline constexpr const char* About =
    "Runs audio files through a VST 2 effect, describes the effect, and measures its speed;\n"
    "installs the patches and routings that come with the " KAV_PRODUCT ".";

inline constexpr const char* Footer =
    "Examples:\n"
    "  kavhost info\n"
    "  kavhost render song.wav -o limited.flac --set \"Threshold (1)=-6 dB\"\n"
    "  kavhost render *.mp3 -o limited/ --format 16 --set \"Limiter (1)=on\"\n"
    "  kavhost edit song.wav --render limited.wav\n"
    "  kavhost shot -o panel.png\n"
    "  kavhost bench --vs other.so\n"
    "  kavhost render song.wav -o out.wav --patch \"Master - Streaming\"\n"
    "  kavhost inspect loud.kvp\n"
    "  kavhost content install\n"
    "  kavhost render --help\n"
    "\n"
    "Exit codes: 0 success, 1 something failed, 2 wrong usage; 130, 129, 141 and\n"
    "143 if Ctrl-C, or the signal HUP, PIPE or TERM, ended it.";

inline constexpr const char* InfoFooter = "Examples:\n"
                                          "  kavhost info --json\n"
                                          "  kavhost info --patch loud.kvp --save-state loud.state\n"
                                          "  kavhost info --plugin other.so --set 0:-3.0";

inline constexpr const char* RenderFooter =
    "The output keeps the input's rate and channels. It keeps the sample format if the\n"
    "output's container supports it; otherwise, and for MP3 and other coded inputs, it gets\n"
    "24 bits. OGG is written at quality 8 of 10; the coder's own loss is not in the report.\n"
    "A file appears under its name only when it is complete.\n"
    "\n"
    "render starts from the effect's built-in values, whatever you have stored for a DAW.\n"
    "Settings are applied in this order: --state, --routing, --parallel, --patch, --channels,\n"
    "--simd, --os, --hq, and then each --set. A state includes the routings of its groups; a\n"
    "patch has only the buttons that select from them.\n"
    "\n"
    "The report's gain is output RMS divided by input RMS in windows of 10 ms, per channel,\n"
    "where the input is above -60 dBFS. The speed is the seconds of audio per second of the\n"
    "whole job; with --jobs the files share the processor.\n"
    "\n"
    "The picture shows the waveform of input and output, their short-term loudness and\n"
    "peaks, and the gain reduction: the gain above, compared with the effect's gain for\n"
    "noise below -60 dBFS, which the effect doesn't limit. A file and its picture are\n"
    "written together or not at all.\n"
    "\n"
    "Examples:\n"
    "  kavhost render song.wav -o limited.flac --set \"Threshold (1)=-6 dB\"\n"
    "  kavhost render *.mp3 -o limited/ --format 16 --set \"Limiter (1)=on\"\n"
    "  kavhost render *.wav -o limited/ --jobs 4 --plot limited/\n"
    "  kavhost render song.wav -o out.wav --patch loud.kvp --os 4 --hq on\n"
    "  kavhost render song.wav -o out.wav --patch \"Master - Streaming\" --strict\n"
    "  kavhost render film.wav -o out.wav --routing surround.kvt --save-state film.state\n"
    "  kavhost render film2.wav -o out2.wav --state film.state --simd on\n"
    "  kavhost render song.wav -o out.wav --plugin other.so --set 1=0.75 --set 0:-3.0";

inline constexpr const char* EditFooter =
    "The file plays through the effect while you set the effect by ear. Below the editor are\n"
    "the position, which you can click and drag, and the time. Keys: space plays and pauses,\n"
    "Left and Right jump 5 seconds back or forward, Home jumps to the beginning, L loops the\n"
    "file, Escape closes the window. Without IN the desktop's dialog asks for the file.\n"
    "\n"
    "The file plays on the default audio device (Linux: by PipeWire, JACK, PulseAudio or\n"
    "ALSA; Windows: by WASAPI); without a device it plays silently. When you close the\n"
    "window, --save-state writes the settings, and --render renders the file with them; each\n"
    "file is written whole or not at all.\n"
    "\n"
    "Examples:\n"
    "  kavhost edit song.wav --save-state song.state\n"
    "  kavhost edit song.mp3 --patch loud.kvp --render limited.flac\n"
    "  kavhost edit film.wav --state film.state --save-state film.state --render out.wav";

inline constexpr const char* ShotFooter =
    "On Linux the editor opens in a window of its own on the display that DISPLAY names.\n"
    "Without one kavhost starts Xvfb, a display without a screen, and ends it afterwards.\n"
    "On Windows its window is invisible, and the editor must fit the screen.\n"
    "\n"
    "With IN, a part of that file plays silently through the effect, in real time, and the\n"
    "picture shows the editor at the end of that part. Without IN the picture is taken when\n"
    "nothing in the editor has changed for a second.\n"
    "\n"
    "Examples:\n"
    "  kavhost shot -o panel.png\n"
    "  kavhost shot song.wav -o busy.png --patch loud.kvp --start 30 --seconds 5\n"
    "  kavhost shot -o large.png --state film.state --width 1508";

inline constexpr const char* InspectFooter =
    "A patch stores each value as the effect does, from 0 to 1. With a profile, inspect shows\n"
    "real quantities instead, and leaves out what is as in a new instance unless you add\n"
    "--all. JSON always has everything.\n"
    "\n"
    "Examples:\n"
    "  kavhost inspect loud.kvp\n"
    "  kavhost inspect \"Master - Streaming\" --all\n"
    "  kavhost inspect 7.1.4\n"
    "  kavhost inspect --json film.state";

inline constexpr const char* BenchFooter =
    "The time is the processor time of the effect's thread, the median of all runs. With --vs\n"
    "the runs of the two effects alternate; with --set2 alone the effect is compared with\n"
    "itself. Without --input the sound is music-like with a peak of -3 dBFS, and the same\n"
    "every time.\n"
    "\n"
    "Examples:\n"
    "  kavhost bench --set \"Oversampling=x4\"\n"
    "  kavhost bench --os 4 --simd on --vs other.so\n"
    "  kavhost bench --vs other.so --set2 3=0.5 --channels 1 --block 64\n"
    "  kavhost bench --set 100=1 --set2 100=0";

inline constexpr const char* ContentFooter =
    "Patches and the user guide are copied to \"" KAV_VENDOR "/" KAV_PRODUCT "\",\n"
    "routings to \"" KAV_VENDOR "/Routings\". Files of your own, and files that you have changed,\n"
    "are neither overwritten nor removed.\n"
    "\n"
    "You can name patches and routings that are not installed: list shows the option for\n"
    "each. kavhost looks in the current folder, then among your own, then in the factory's.\n"
    "\n"
    "Examples:\n"
    "  kavhost content install\n"
    "  kavhost content list\n"
    "  kavhost content uninstall";

inline constexpr const char* SetHelp = "NAME=QUANTITY with a name from the profile, such as\n"
                                       "\"Release (1)=100 ms\"; INDEX=VALUE with a value from 0 to 1;\n"
                                       "or INDEX:TEXT with the text that the effect's own display\n"
                                       "should show. May be repeated.";

} // namespace KAV::Host
