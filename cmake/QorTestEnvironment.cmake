# The environment of every test, but for what a test sets itself: traces follow no option file of the user's home, no
# configuration of the machine, and no directory that it names.
set(ENV{QORTraDecDir} /nowhere)
foreach(name VELSysTrace QORTraceDir QORTemp)
  unset(ENV{${name}})
endforeach()
