-- For ardour7-lua: makes a session of stereo tracks, each with the effect.
-- The environment: KAV_SESSION (folder), KAV_NAME (of the session), KAV_EFFECT, KAV_TRACKS ("left right").
Session = create_session(os.getenv("KAV_SESSION"), os.getenv("KAV_NAME"), 48000)
assert(Session, "no session")
for name in os.getenv("KAV_TRACKS"):gmatch("%S+") do
    local tracks = Session:new_audio_track(2, 2, nil, 1, name, ARDOUR.PresentationInfo.max_order,
        ARDOUR.TrackMode.Normal, true)
    for track in tracks:iter() do
        local effect = ARDOUR.LuaAPI.new_plugin(Session, os.getenv("KAV_EFFECT"), ARDOUR.PluginType.LXVST, "")
        assert(not effect:isnil(), "the effect is not known")
        assert(track:add_processor_by_index(effect, 0, nil, true) == 0, "the effect cannot be inserted")
    end
end
Session:save_state("", false, false, false, false, false)
print("saved")
close_session()
quit()
