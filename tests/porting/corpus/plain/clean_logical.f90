!prints: T
logical setenvqq
external setenvqq
print '(l1)', setenvqq('CORPUS=1')
end
