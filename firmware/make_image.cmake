# Writes OUTPUT, the firmware image of the virtual cameras of product type TYPE, as Intel HEX.
#
# The image is none that a processor could run. It has what a loader has to cope with: runs of bytes with gaps between
# them, the last byte of the space in use, and records that place nothing.
#
#   0x0000  "Firmware of the virtual camera, type <TYPE>" and a zero byte
#   0x0100  512 bytes, each being the low byte of its address plus the low byte of the type
#   0x3FFE  the type, u16
cmake_minimum_required(VERSION 3.25)

# <value> as so many digits.
function(hex value digits result)
  string(REPEAT 0 ${digits} zeros)
  math(EXPR text "(1 << 4 * ${digits}) + ${value}" OUTPUT_FORMAT HEXADECIMAL)
  string(SUBSTRING ${text} 3 ${digits} text)
  string(TOUPPER ${text} text)
  set(${result} ${text} PARENT_SCOPE)
endfunction()

# Appends one record to `text`; data are hex digits.
function(record type address data)
  string(TOUPPER "${data}" data)
  string(LENGTH "${data}" digits)
  math(EXPR count "${digits} / 2")
  hex(${count} 2 count)
  hex(${address} 4 address)
  set(bytes ${count}${address}${type}${data})
  set(sum 0)
  string(REGEX MATCHALL ".." each ${bytes})
  foreach(byte ${each})
    math(EXPR sum "${sum} + 0x${byte}")
  endforeach()
  math(EXPR checksum "(256 - ${sum} % 256) % 256")
  hex(${checksum} 2 checksum)
  set(text "${text}:${bytes}${checksum}\n" PARENT_SCOPE)
endfunction()

# Appends the records of a run of bytes, sixteen bytes each.
function(run address data)
  string(REGEX MATCHALL "................................|.+$" pieces ${data})
  foreach(piece ${pieces})
    record(00 ${address} ${piece})
    math(EXPR address "${address} + 16")
  endforeach()
  set(text "${text}" PARENT_SCOPE)
endfunction()

set(text "")
record(04 0 0000)
string(HEX "Firmware of the virtual camera, type ${TYPE}" name)
run(0 ${name}00)
set(pattern "")
foreach(address RANGE 256 767)
  math(EXPR value "(${address} + ${TYPE}) % 256")
  hex(${value} 2 value)
  string(APPEND pattern ${value})
endforeach()
run(256 ${pattern})
hex("(${TYPE} % 256 << 8) + ${TYPE} / 256" 4 type)
run(16382 ${type})
record(05 0 00000100)
record(01 0 "")
file(WRITE ${OUTPUT} "${text}")
