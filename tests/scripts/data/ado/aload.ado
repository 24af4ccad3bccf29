*! version 1.0  21nov2026
program aload
  version 12.1
  display `"aload got |`0'|"'
  helper
  display "`1' again"
end

program helper
  display "helper of aload"
end
