# Writes the manual pages and the shells' completion that the tool makes of its own tables.
# Usage: cmake -D TOOL=orvo -D FOLDER=… -P WritePages.cmake
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${FOLDER})

function(write_output path)
  cmake_path(GET path PARENT_PATH folder)
  file(MAKE_DIRECTORY ${FOLDER}/${folder})
  execute_process(COMMAND ${TOOL} ${ARGN} OUTPUT_FILE ${FOLDER}/${path}
    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

write_output(man1/orvo.1 manual)
execute_process(COMMAND ${TOOL} complete orvo "" OUTPUT_VARIABLE commands
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "\t[^\n]*\n" ";" commands "${commands}")
list(REMOVE_ITEM commands "")
foreach(command IN LISTS commands)
  write_output(man1/orvo-${command}.1 manual ${command})
endforeach()
# Where Debian's packages of the shells look.
write_output(share/bash-completion/completions/orvo completion bash)
write_output(share/zsh/vendor-completions/_orvo completion zsh)
write_output(share/fish/vendor_completions.d/orvo.fish completion fish)
