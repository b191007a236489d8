# Prints how large a built file is.
file(SIZE ${FILE} bytes)
get_filename_component(name ${FILE} NAME)
message("${name}: ${bytes} bytes")
