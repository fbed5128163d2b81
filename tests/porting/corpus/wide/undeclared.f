!finds: integer-width iranset
!finds: integer-width ranget
!prints: 12345
      program seeds
      integer seed, read
      seed = 12345
      call iranset(seed)
      call ranget(read)
      print '(i0)', read
      end
