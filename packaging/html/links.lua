-- Fits the links of the Markdown pages to the package: pages are HTML there, and what only the source tree has is no
-- link.
local sourceOnly = {
  src = true, tests = true, tools = true, scripts = true, cmake = true, bench = true, packaging = true
}

local function AsPage(name)
  return (name:gsub("%.md$", ".html"):gsub("%.md#", ".html#"))
end

function Link(link)
  if link.target:match("^%a+:") then
    return link
  end
  local folder = link.target:gsub("^%.%./", ""):match("^([^/]+)/")
  if sourceOnly[folder] then
    return link.content
  end
  link.target = AsPage(link.target)
  link.content = link.content:walk({ Str = function(text) return pandoc.Str(AsPage(text.text)) end })
  return link
end
