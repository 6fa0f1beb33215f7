"""Tags of files that kavhost writes, as ffprobe, MediaInfo and SoX read them; the inputs are mostly made by ffmpeg."""

import json
import struct

from support import HostTest

TEXTS = {"title": "Bells", "artist": "Größe – 音", "album": "Towers", "comment": "at noon", "date": "2024-05-06",
         "genre": "Field"}
BROADCAST = {"description": "A take of the bells", "originator": "Tower", "originator_reference": "DE-17",
             "origination_date": "2024-05-06", "origination_time": "10:11:12", "time_reference": "172800000"}


def bext_of_version_2():
    """A broadcast extension with a loudness of -40 LUFS in a version 2 chunk."""
    text = b"".join(part.encode().ljust(size, b"\0") for part, size in
                    (("Bells", 256), ("Tower", 32), ("DE-17", 32), ("2024-05-06", 10), ("10:11:12", 8)))
    return (text + struct.pack("<QH64x5h180x", 172800000, 2, -4000, 0, -4000, -4000, -4000)
            + b"A=PCM,F=48000,T=Recorder\r\n")


class Tags(HostTest):
    @classmethod
    def ffmpeg(cls, *arguments):
        said = cls.run_program("ffmpeg", "-hide_banner", "-loglevel", "error", "-y", *arguments)
        if said:
            raise AssertionError(said)

    @classmethod
    def set_up_once(cls):
        cls.ffmpeg("-f", "lavfi", "-i", "sine=1000:duration=3.5,aformat=channel_layouts=stereo", "-ar", "48000",
                   "plain.wav")
        cls.ffmpeg("-f", "lavfi", "-i", "color=red:size=64x64", "-frames:v", "1", "cover.png")

    def limit(self, source, target):
        """kavhost's report."""
        return json.loads(self.kavhost("render", source, "-o", target, "--set", "Threshold (1)=-6", "--json"))[0]

    def probe(self, file):
        return json.loads(self.run_program("ffprobe", "-v", "error", "-of", "json", "-show_format", "-show_streams",
                                           "-show_chapters", file))

    def texts(self, file):
        """What ffprobe sees, with names in small letters. Ogg has its tags with the stream."""
        probed = self.probe(file)
        tags = probed["format"].get("tags", {}) | probed["streams"][0].get("tags", {})
        return {name.lower(): text for name, text in tags.items()}

    def info(self, file):
        """What MediaInfo sees: one record for the file, one for each stream."""
        return json.loads(self.run_program("mediainfo", "--Output=JSON", file))["media"]["track"]

    def decodes(self, file):
        self.ffmpeg("-i", file, "-f", "null", "-")
        self.assertEqual(self.run_program("sox", file, "-n", "trim", "0", "0.1"), "")

    def make(self, name, *options, texts):
        metadata = [word for key, text in texts.items() for word in ("-metadata", f"{key}={text}")]
        self.ffmpeg("-i", "plain.wav", *options, *metadata, name)

    def test_texts_of_a_wav_reach_every_container(self):
        self.make("in.wav", texts=TEXTS)
        for name in ("a.wav", "a.flac", "a.ogg", "a.aiff"):
            self.limit("in.wav", name)
            self.assertLessEqual(TEXTS.items(), self.texts(name).items(), name)
            general = self.info(name)[0]
            self.assertEqual(general["Title"], "Bells", name)
            if name != "a.wav":  # where MediaInfo takes UTF-8 for Latin-1, and has names of its own
                self.assertEqual((general["Performer"], general["Album"]), (TEXTS["artist"], "Towers"), name)
            self.decodes(name)
        self.assertIn("at noon", self.run_program("soxi", "-a", "a.flac"))

    def test_a_broadcast_wav_stays_one(self):
        self.make("in.wav", "-write_bext", "1", texts=BROADCAST)
        self.limit("in.wav", "out.wav")
        there, here = self.texts("in.wav"), self.texts("out.wav")
        for name in ("comment", "encoded_by", "originator_reference", "date", "creation_time", "time_reference"):
            self.assertIn(name, there)
            self.assertEqual(here[name], there[name], name)
        self.limit("in.wav", "a.flac")
        self.assertEqual(self.texts("a.flac")["time_reference"], "172800000")
        self.limit("a.flac", "back.wav")
        self.assertEqual(self.texts("back.wav")["time_reference"], "172800000")

    def test_the_loudness_in_a_broadcast_chunk_is_that_of_the_output(self):
        chunk = bext_of_version_2()
        body = (self.folder / "plain.wav").read_bytes()[8:] + b"bext" + struct.pack("<I", len(chunk)) + chunk
        (self.folder / "in.wav").write_bytes(b"RIFF" + struct.pack("<I", len(body)) + body)
        after = self.limit("in.wav", "out.wav")["after"]
        audio = self.info("out.wav")[1]["extra"]
        self.assertEqual(float(audio["LoudnessValue"]), round(after["loudness_lufs"], 2))
        self.assertEqual(float(audio["MaxTruePeakLevel"]), round(after["true_peak_dbtp"], 2))
        self.assertEqual(float(audio["MaxShortTermLoudness"]), round(after["highest_short_term_lufs"], 2))
        history = self.texts("out.wav")["coding_history"]
        self.assertRegex(history, r"^A=PCM,F=48000,T=Recorder\r\nA=PCM,F=48000,W=16,M=stereo,T=KAV Sorrel Limiter;")

    def test_an_mp3_brings_its_picture_and_leaves_its_gain_behind(self):
        gain = {"REPLAYGAIN_TRACK_GAIN": "-7.50 dB", "REPLAYGAIN_TRACK_PEAK": "1.1"}
        self.make("in.mp3", "-i", "cover.png", "-map", "0", "-map", "1", "-c:v", "copy", "-disposition:v",
                  "attached_pic", texts=TEXTS | gain)
        self.assertIn("replaygain_track_gain", self.texts("in.mp3"))
        for name in ("a.flac", "a.ogg", "a.aiff", "a.wav"):
            notes = self.limit("in.mp3", name)["notes"]
            self.assertIn("REPLAYGAIN_TRACK_GAIN", " ".join(notes))
            texts = self.texts(name)
            self.assertEqual((texts["title"], texts["artist"]), (TEXTS["title"], TEXTS["artist"]), name)
            self.assertNotIn("replaygain", (self.folder / name).read_bytes().decode("latin-1").lower(), name)
            if name != "a.wav":  # whose ID3v2 chunk ffprobe doesn't look into for pictures
                pictures = [stream for stream in self.probe(name)["streams"] if stream["codec_type"] == "video"]
                self.assertEqual([(p["width"], p["disposition"]["attached_pic"]) for p in pictures], [(64, 1)], name)
            if name in ("a.flac", "a.ogg"):  # in the others MediaInfo sees no pictures
                self.assertEqual(self.info(name)[0].get("Cover"), "Yes", name)
            else:
                self.assertIn((self.folder / "cover.png").read_bytes(), (self.folder / name).read_bytes(), name)
            self.decodes(name)

    def test_markers_become_chapters(self):
        cue = struct.pack("<I", 2) + b"".join(struct.pack("<II4sIII", number, frame, b"data", 0, 0, frame)
                                              for number, frame in ((1, 4800), (2, 48000)))
        labels = b"adtl" + b"".join(b"labl" + struct.pack("<II", 10, number) + text for number, text in
                                    ((1, b"Verse\0"), (2, b"Choir\0")))
        body = (self.folder / "plain.wav").read_bytes()[8:]
        for name, chunk in ((b"cue ", cue), (b"LIST", labels)):
            body += name + struct.pack("<I", len(chunk)) + chunk
        (self.folder / "in.wav").write_bytes(b"RIFF" + struct.pack("<I", len(body)) + body)
        self.limit("in.wav", "a.aiff")
        self.decodes("a.aiff")
        self.limit("a.aiff", "out.wav")
        chapters = [(chapter["start_time"], chapter["tags"]["title"]) for chapter in self.probe("out.wav")["chapters"]]
        self.assertEqual(chapters, [("0.100000", "Verse"), ("1.000000", "Choir")])
