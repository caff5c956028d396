#!/bin/sh
# The header with its opening comment marked as Doxygen wants the comment of a file to be.
exec sed -e '1s,^// ,/// \\file\n/// ,' -e '2,/^[^/]/s,^//\([^/]\|$\),///\1,' "$1"
