program notreached1
  display "x"
end
error 111
