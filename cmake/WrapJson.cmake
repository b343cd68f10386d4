# cmake -DINPUT=file.json -DOUTPUT=file.js -DVARIABLE=name -P WrapJson.cmake
# Makes a JSON file into a script that sets window.<name>, so that a page opened from the disk
# can use it: such a page may load scripts but not fetch files.
file(READ ${INPUT} json)
file(WRITE ${OUTPUT} "window.${VARIABLE} = ${json};\n")
