#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/tags/tag_library.h"
#include "tools/kavhost/tags/tag_streams.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <taglib/apetag.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/commentsframe.h>
#include <taglib/flacfile.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/opusfile.h>
#include <taglib/speexfile.h>
#include <taglib/tbytevectorstream.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tpropertymap.h>
#include <taglib/vorbisfile.h>
#include <taglib/xiphcomment.h>

namespace KAV::Host {

namespace {

namespace ID3v2 = TagLib::ID3v2;

std::string Text(const TagLib::String& text) {
    return text.to8Bit(true);
}

TagLib::String Text(const std::string& text) {
    return {text, TagLib::String::UTF8};
}

std::string BytesOf(const TagLib::ByteVector& bytes) {
    return {bytes.data(), bytes.size()};
}

TagLib::ByteVector BytesOf(const std::string& bytes) {
    return {bytes.data(), static_cast<unsigned>(bytes.size())};
}

std::string Capitals(std::string text) {
    std::ranges::transform(text, text.begin(),
        [](char letter) { return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter; });
    return text;
}

void AddName(std::vector<std::string>& names, const std::string& name) {
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
}

/// Adds all values of the keys that `tags` doesn't have.
void AddProperties(const TagLib::PropertyMap& properties, STagSet& tags) {
    std::vector<STagField> added;
    constexpr std::string_view mask = "WAVEFORMATEXTENSIBLE_CHANNEL_MASK"; // belongs to the audio
    for (const auto& [name, values] : properties) {
        const auto key = Capitals(Text(name));
        if (IsOutdatedByRendering(key)) {
            AddName(tags.outdated, key);
        } else if (key != mask && tags.Find(key) == nullptr) {
            for (const auto& value : values) added.push_back({key, Text(value)});
        }
    }
    std::ranges::move(added, std::back_inserter(tags.fields));
}

void AddPictures(const TagLib::List<TagLib::FLAC::Picture*>& pictures, STagSet& tags) {
    for (const auto* picture : pictures) {
        tags.pictures.push_back(
            {picture->type(), Text(picture->mimeType()), Text(picture->description()), picture->width(),
                picture->height(), picture->colorDepth(), picture->numColors(), BytesOf(picture->data())});
    }
}

void AddPictures(const ID3v2::Tag& tag, STagSet& tags) {
    const auto frames = tag.frameListMap().find("APIC");
    if (frames == tag.frameListMap().end()) return;
    for (const auto* frame : frames->second) {
        if (const auto* picture = dynamic_cast<const ID3v2::AttachedPictureFrame*>(frame)) {
            tags.pictures.push_back({picture->type(), Text(picture->mimeType()), Text(picture->description()),
                0, 0, 0, 0, BytesOf(picture->picture())});
        }
    }
}

/// The name of a frame that is outdated by rendering; empty for any other.
std::string OutdatedName(const ID3v2::Frame& frame) {
    auto id = BytesOf(frame.frameID());
    // Gains and equalisation, in all their versions.
    for (const char* name : {"RVA2", "RVAD", "RGAD", "XRVA"}) {
        if (id == name) return id;
    }
    std::string key;
    if (const auto* text = dynamic_cast<const ID3v2::UserTextIdentificationFrame*>(&frame))
        key = Text(text->description());
    if (const auto* comment = dynamic_cast<const ID3v2::CommentsFrame*>(&frame))
        key = Text(comment->description());
    return IsOutdatedByRendering(key) ? Capitals(key) : std::string();
}

bool RemoveOutdated(ID3v2::Tag& tag, std::vector<std::string>& names) {
    // Copied one by one: a copy of the library's list would own the frames as well.
    const std::vector<ID3v2::Frame*> frames(tag.frameList().begin(), tag.frameList().end());
    bool isChanged = false;
    for (auto* frame : frames) {
        const auto name = OutdatedName(*frame);
        if (name.empty()) continue;
        AddName(names, name);
        tag.removeFrame(frame);
        isChanged = true;
    }
    return isChanged;
}

std::string Rendered(const ID3v2::Tag& tag) {
    const bool isOld = tag.header() != nullptr && tag.header()->majorVersion() == 3;
    return BytesOf(tag.render(isOld ? ID3v2::v3 : ID3v2::v4));
}

/// Text, pictures and the names of everything else.
void AddId3(ID3v2::Tag& tag, STagSet& tags) {
    const auto properties = tag.properties();
    AddProperties(properties, tags);
    AddPictures(tag, tags);
    for (const auto& other : properties.unsupportedData()) {
        auto name = Text(other);
        if (constexpr std::string_view unknown = "UNKNOWN/"; name.starts_with(unknown))
            name.erase(0, unknown.size());
        if (name != "APIC") AddName(tags.only, name);
    }
}

STagSet ReadComments(TagLib::Ogg::XiphComment* comment) {
    STagSet tags;
    if (comment == nullptr) return tags;
    AddProperties(comment->properties(), tags);
    AddPictures(comment->pictureList(), tags);
    return tags;
}

STagSet ReadFlac(CBoundedStream& stream) {
    TagLib::FLAC::File file(&stream, ID3v2::FrameFactory::instance(), false);
    if (!file.isValid()) throw CFailure("damaged");
    auto tags = ReadComments(file.hasXiphComment() ? file.xiphComment() : nullptr);
    AddPictures(file.pictureList(), tags);
    if (file.hasID3v2Tag()) AddProperties(file.ID3v2Tag()->properties(), tags);
    return tags;
}

template<typename FILE>
STagSet ReadOgg(CBoundedStream& stream) {
    FILE file(&stream, false);
    if (!file.isValid()) throw CFailure("damaged");
    return ReadComments(file.tag());
}

STagSet ReadMpeg(CBoundedStream& stream) {
    TagLib::MPEG::File file(&stream, ID3v2::FrameFactory::instance(), false);
    STagSet tags;
    if (file.hasID3v2Tag() && !file.ID3v2Tag()->isEmpty()) {
        auto& id3 = *file.ID3v2Tag();
        RemoveOutdated(id3, tags.outdated);
        AddId3(id3, tags);
        if (!id3.isEmpty()) tags.id3 = Rendered(id3);
    }
    if (file.hasAPETag()) AddProperties(file.APETag()->properties(), tags);
    if (file.hasID3v1Tag()) AddProperties(file.ID3v1Tag()->properties(), tags);
    return tags;
}

/// Where the audio begins after an ID3v2 tag at the front.
std::streamoff SizeOfLeadingId3(const std::string& head) {
    if (!head.starts_with("ID3") || head.size() < 10) return 0;
    std::streamoff size = 0;
    for (std::size_t i = 6; i < 10; ++i) size = size << 7 | (static_cast<unsigned char>(head[i]) & 0x7F);
    return size + 10;
}

class CTagLib final : public ITagLibrary {
public:
    STagSet ReadFile(const std::filesystem::path& file) const override {
        const auto head = Head(file, 0);
        const auto after = SizeOfLeadingId3(head);
        const auto audio = after > 0 ? Head(file, after) : head;
        CBoundedStream stream(file);
        try {
            auto tags = Read(stream, audio, after > 0);
            stream.Check();
            return tags;
        } catch (...) {
            stream.Check(); // what came too early to its end only looks damaged
            throw;
        }
    }

    STagSet ReadId3(const std::string& bytes) const override {
        STagSet tags;
        TagLib::ByteVectorStream stream(BytesOf(bytes));
        TagLib::MPEG::File file(&stream, ID3v2::FrameFactory::instance(), false);
        if (!bytes.starts_with("ID3") || !file.hasID3v2Tag()) throw CFailure("damaged");
        auto& id3 = *file.ID3v2Tag();
        const bool isChanged = RemoveOutdated(id3, tags.outdated);
        AddId3(id3, tags);
        if (!isChanged)
            tags.id3 = bytes;
        else if (!id3.isEmpty())
            tags.id3 = Rendered(id3);
        return tags;
    }

    std::string MakeId3(const STagSet& tags) const override {
        TagLib::ByteVectorStream stream(BytesOf(tags.id3));
        TagLib::MPEG::File file(&stream, ID3v2::FrameFactory::instance(), false);
        auto& id3 = *file.ID3v2Tag(true);
        auto properties = id3.properties();
        const auto there = properties;
        bool isChanged = false;
        for (const auto& field : tags.fields) {
            if (there.contains(Text(field.key))) continue;
            isChanged = true;
            properties[Text(field.key)].append(Text(field.value));
        }
        if (isChanged) id3.setProperties(properties);
        if (id3.frameListMap().find("APIC") == id3.frameListMap().end()) {
            for (const auto& picture : tags.pictures) {
                isChanged = true;
                id3.addFrame(PictureFrame(picture).release());
            }
        }
        if (!isChanged) return tags.id3;
        return Rendered(id3);
    }

    bool WriteComments(
        const std::filesystem::path& file, EContainer container, const STagSet& tags) const override {
        CCheckedStream stream(file);
        const bool isDone = stream.isOpen() && (container == EContainer::Flac ? WriteFlac(stream, tags)
                                                                              : WriteOgg(stream, tags));
        if (isDone) stream.Close();
        return isDone;
    }

private:
    static bool WriteFlac(CCheckedStream& stream, const STagSet& tags) {
        TagLib::FLAC::File file(&stream, ID3v2::FrameFactory::instance(), false);
        if (!file.isValid()) return false;
        AddFields(tags, *file.xiphComment(true));
        for (const auto& picture : tags.pictures) file.addPicture(Picture(picture).release());
        if (!file.save()) throw CFailure("its tags cannot be written");
        return true;
    }

    static bool WriteOgg(CCheckedStream& stream, const STagSet& tags) {
        TagLib::Ogg::Vorbis::File file(&stream, false);
        if (!file.isValid() || file.tag() == nullptr) return false;
        AddFields(tags, *file.tag());
        for (const auto& picture : tags.pictures) file.tag()->addPicture(Picture(picture).release());
        if (!file.save()) throw CFailure("its tags cannot be written");
        return true;
    }

    static STagSet Read(CBoundedStream& stream, const std::string& audio, bool hasId3) {
        if (audio.starts_with("fLaC")) return ReadFlac(stream);
        if (audio.starts_with("OggS")) {
            const auto has = [&audio](std::string_view mark) { return audio.find(mark) < 48; };
            if (has("\x01vorbis")) return ReadOgg<TagLib::Ogg::Vorbis::File>(stream);
            if (has("OpusHead")) return ReadOgg<TagLib::Ogg::Opus::File>(stream);
            if (has("Speex   ")) return ReadOgg<TagLib::Ogg::Speex::File>(stream);
            if (has("\x7F"
                    "FLAC"))
                return ReadOgg<TagLib::Ogg::FLAC::File>(stream);
        }
        const bool isMpeg = audio.size() > 1 && audio[0] == '\xFF' && (audio[1] & 0xE0) == 0xE0;
        return hasId3 || isMpeg ? ReadMpeg(stream) : STagSet();
    }

    static std::string Head(const std::filesystem::path& file, std::streamoff place) {
        std::string head(64, '\0');
        std::ifstream stream(file, std::ios::binary);
        stream.seekg(place);
        stream.read(head.data(), static_cast<std::streamsize>(head.size()));
        head.resize(static_cast<std::size_t>(stream.gcount()));
        return head;
    }

    static std::unique_ptr<ID3v2::AttachedPictureFrame> PictureFrame(const STagPicture& picture) {
        auto frame = std::make_unique<ID3v2::AttachedPictureFrame>();
        frame->setType(static_cast<ID3v2::AttachedPictureFrame::Type>(picture.type));
        frame->setMimeType(Text(picture.mime));
        frame->setDescription(Text(picture.description));
        frame->setTextEncoding(TagLib::String::UTF8);
        frame->setPicture(BytesOf(picture.bytes));
        return frame;
    }

    static std::unique_ptr<TagLib::FLAC::Picture> Picture(const STagPicture& picture) {
        auto block = std::make_unique<TagLib::FLAC::Picture>();
        block->setType(static_cast<TagLib::FLAC::Picture::Type>(picture.type));
        block->setMimeType(Text(picture.mime));
        block->setDescription(Text(picture.description));
        block->setWidth(picture.width);
        block->setHeight(picture.height);
        block->setColorDepth(picture.depth);
        block->setNumColors(picture.colours);
        block->setData(BytesOf(picture.bytes));
        return block;
    }

    /// Comments' keys are plain ASCII without "=".
    static std::string CommentKey(std::string key) {
        std::ranges::replace_if(
            key, [](char letter) { return letter < ' ' || letter > '}' || letter == '='; }, '_');
        return key;
    }

    static void AddFields(const STagSet& tags, TagLib::Ogg::XiphComment& comment) {
        for (const auto& field : tags.fields) comment.removeFields(Text(CommentKey(field.key)));
        for (const auto& field : tags.fields)
            comment.addField(Text(CommentKey(field.key)), Text(field.value), false);
    }
};

} // namespace

const ITagLibrary* TagLibrary() {
    static const CTagLib library;
    return &library;
}

} // namespace KAV::Host
