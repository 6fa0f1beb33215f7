-- For ardour7-lua: makes a session with the effect on a stereo track, with a preset and then some values, or restores
-- it; tells each value that the effect then holds, and saves the session.
-- The environment: KAV_SESSION (folder), KAV_NAME (of the session), KAV_EFFECT, KAV_VALUES ("4=0.6 16=1"),
-- KAV_PRESET (a label, or empty), KAV_OPEN (1: restore, insert and set nothing).
local folder, name = os.getenv("KAV_SESSION"), os.getenv("KAV_NAME")
local wanted = os.getenv("KAV_EFFECT")

local function tell(effect)
    local plugin = effect:to_insert():plugin(0)
    print("parameters " .. plugin:parameter_count())
    print("channels " .. effect:to_insert():input_streams():n_audio() .. " "
        .. effect:to_insert():output_streams():n_audio())
    print("instances " .. effect:to_insert():get_count())
    for i = 0, plugin:parameter_count() - 1 do
        print(string.format("value %d %.9g", i, ARDOUR.LuaAPI.get_processor_param(effect, i, true)))
    end
end

if os.getenv("KAV_OPEN") == "1" then
    Session = load_session(folder, name)
    assert(Session, "no session")
    local effect = Session:route_by_name("trk"):nth_plugin(0)
    assert(not effect:isnil(), "the effect was not restored")
    print("name " .. effect:display_name())
    tell(effect)
else
    Session = create_session(folder, name, 48000)
    assert(Session, "no session")
    for found in ARDOUR.LuaAPI.list_plugins():iter() do
        if found.name == wanted then print("listed " .. found.name) end
    end
    local tracks = Session:new_audio_track(2, 2, nil, 1, "trk", ARDOUR.PresentationInfo.max_order,
        ARDOUR.TrackMode.Normal, true)
    for track in tracks:iter() do
        local effect = ARDOUR.LuaAPI.new_plugin(Session, wanted, ARDOUR.PluginType.LXVST, "")
        assert(not effect:isnil(), "the effect is not known")
        assert(track:add_processor_by_index(effect, 0, nil, true) == 0, "the effect cannot be inserted")
        local label = os.getenv("KAV_PRESET")
        if label ~= "" then
            local plugin = effect:to_insert():plugin(0)
            local preset = plugin:preset_by_label(label)
            assert(preset and preset.valid, "no preset " .. label)
            assert(plugin:load_preset(preset), "the preset was refused")
        end
        for index, value in os.getenv("KAV_VALUES"):gmatch("(%d+)=([%d.e+-]+)") do
            assert(ARDOUR.LuaAPI.set_processor_param(effect, tonumber(index), tonumber(value)), index)
        end
        tell(effect)
    end
end
Session:save_state("", false, false, false, false, false)
print("saved")
close_session()
quit()
