# Links of the pages that lead out of docs/ lead to their counterparts in the API reference.
s,](\.\./examples/\([^)]*\)),](@ref \1/main.cpp),g
s,](\.\./examples),](examples.html),g
s,](\.\./engine),](@ref contract),g
