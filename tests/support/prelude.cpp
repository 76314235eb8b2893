// Nothing but the headers that every test reads, compiled once for all of them.
