local shared yes
local mine inner
