"""`qxport doctor`: what stands between a program and the library.

scan      which sources there are, which modules they make and use
compile   the user's compiler on each source, in a scratch directory
tree      the compiler's dump of what it understood: calls with their arguments, names with their types
objects   what the objects define and want, with the lines where they do
judge     findings: what of it is in the way, and what to do
programs  which sources make a program, and the command that builds it
report    text and JSON
"""
