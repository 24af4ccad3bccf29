program bload, rclass
  helper
  aload from bload
  helper
  return local who bload
end
program helper
  display "helper of bload"
end
