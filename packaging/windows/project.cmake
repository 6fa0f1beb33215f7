# Options of every target of a library. Warnings about sources that aren't ours would only be noise.
add_compile_options(-w "-ffile-prefix-map=${KAV_SOURCES}/=" ${KAV_COMPILE_OPTIONS})
